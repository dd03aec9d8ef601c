// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "polarization_processor/vector/blocks.h"

namespace kv {

/// The blocks of the module that this is linked into.
extern const BlockTable kModuleBlocks;

}  // namespace kv
