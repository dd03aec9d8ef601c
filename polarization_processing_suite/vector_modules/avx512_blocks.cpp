// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "polarization_processor/vector/block_entries.h"
#include "vector_modules/module_blocks.h"
#include "vector_modules/module_form.h"
#include "vector_modules/simd512.h"

namespace kv {
namespace {

constinit const BlockEntries kEntries = block_entries<ModuleForm<Simd512>, Wanted::all>();

}  // namespace

constinit const BlockTable kModuleBlocks{kEntries, kEntries};

}  // namespace kv
