// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "polarization_processor/vector/block_entries.h"
#include "vector_modules/module_blocks.h"
#include "vector_modules/module_form.h"
#include "vector_modules/simd256.h"

namespace kv {

extern const BlockEntries kAvx2Scheduled;

namespace {

constinit const BlockEntries kOthers = block_entries<ModuleForm<Simd256>, Wanted::others>();

}  // namespace

constinit const BlockTable kModuleBlocks{kAvx2Scheduled, kOthers};

}  // namespace kv
