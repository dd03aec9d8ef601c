// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "polarization_processor/vector/blocks.h"
#include "polarization_processor/vector/weighted_frame.h"

namespace kv {

/// Evaluates a row pair from an even `column` to the frame's right edge.
using FinishRowPair = void (*)(const WeightedFrame& frame, std::uint64_t row, std::uint64_t column);

/// The last two rows of a frame of even height, from `row` on, or the last one of an odd height.
using WalkLastRows = void (*)(const WeightedFrame& frame, std::uint64_t row);

/// One member of the family: the steps that tell it from the others, in the order of a frame's way
/// through them. What its axes are, no step asks.
struct FrameKernel {
  BlockConstants (*prepare)(const TransformRequest& request);
  RunBlocks run_blocks;
  FinishRowPair finish_row_pair;
  WalkLastRows walk_last_rows;
};

/// The member of those axes, with the blocks of a form.
FrameKernel frame_kernel(const KernelAxes& axes, const BlockTable& blocks);

}  // namespace kv
