// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>

namespace kv::platform {

/// What the processor calls itself; empty when it does not tell.
std::string processor_name();

}  // namespace kv::platform
