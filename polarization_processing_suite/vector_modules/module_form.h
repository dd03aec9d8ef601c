// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>

#include "polarization_processor/vector/flatten.h"
#include "polarization_processor/vector/wide_blocks.h"

namespace kv {

/// All of a row pair's blocks by one instruction set. Fewer blocks than one step takes go to the
/// library's own form.
template <class Simd>
struct ModuleForm {
  template <BlockAxes axes>
  KV_FLATTEN static void run(const TransformRequest& request, const BlockConstants& constants,
                             std::uint64_t count, BlockPosition position) {
    if (count < Simd::kBlocks) {
      constexpr std::size_t encoding = encoding_index(axes.encoding);
      const BlockEntries& entries =
          is_scheduled(axes.encoding) ? kSse41Blocks.scheduled : kSse41Blocks.others;
      entries[encoding][axes.phase](request, constants, count, position);
    } else {
      run_wide_steps<Simd, axes>(request, constants, count, position);
    }
  }
};

}  // namespace kv
