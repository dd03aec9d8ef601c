// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "kevrinth_qrm_polarization_processor.h"

int main() { return kv_polarization_processor_module_initialize(); }
