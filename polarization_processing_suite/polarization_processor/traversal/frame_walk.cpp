// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "polarization_processor/traversal/frame_walk.h"

namespace kv {

void walk_frame(const TransformRequest& request, const PhaseView& view, const FrameKernel& kernel) {
  const WeightedFrame frame(request, view);
  const std::uint64_t height = static_cast<std::uint64_t>(request.height);
  const std::uint64_t width = static_cast<std::uint64_t>(request.width);
  if (height == 2) {
    kernel.walk_last_rows(frame, 0);
    return;
  }

  const BlockConstants constants = kernel.prepare(request);
  // One block fewer than fits keeps the last block's eight samples inside the row. Below a width
  // of 4 the count wraps around, and the blocks run on until an access faults.
  const std::uint64_t block_count = (width >> 2) - 1;
  const std::uint64_t floats_of_row = 2 * kBlockColumns * block_count;
  const std::uint64_t upper_pairs_end = (height - 1) / 2 * floats_of_row;
  BlockPosition position{.upper_index = 0,
                         .lower_index = width,
                         .below_index = 2 * width,
                         .upper_pair_cursor = 0,
                         .lower_pair_cursor = 2 * width,
                         .lower_pairs_stay = true};
  std::uint64_t row = 0;
  do {
    position.lower_pairs_stay = position.lower_pair_cursor + floats_of_row > upper_pairs_end;
    if (block_count != 0) kernel.run_blocks(request, constants, block_count, position);
    kernel.finish_row_pair(frame, row, kBlockColumns * block_count);

    row += 2;
    position.upper_index += 2 * width;
    position.lower_index += 2 * width;
    position.below_index += 2 * width;
    position.upper_pair_cursor += floats_of_row;
    position.lower_pair_cursor += floats_of_row;
  } while (row < height - 2);
  kernel.walk_last_rows(frame, row);
}

}  // namespace kv
