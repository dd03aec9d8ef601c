// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "polarization_processor/vector/block_entries.h"
#include "vector_modules/module_blocks.h"
#include "vector_modules/module_form.h"
#include "vector_modules/simd256.h"

namespace kv {

extern const BlockEntries kAvx2Scheduled;
constinit const BlockEntries kAvx2Scheduled =
    block_entries<ModuleForm<Simd256>, Wanted::scheduled>();

}  // namespace kv
