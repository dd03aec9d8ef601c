#pragma once

#include "polarization_processor/traversal/kernel_axes.h"
#include "polarization_processor/traversal/last_rows_walker.h"
#include "polarization_processor/traversal/row_pair_end.h"
#include "polarization_processor/vector/blocks.h"

namespace kv {

/// What tells one frame kernel from another, in the order of a frame's way through it.
struct KernelSteps {
  BlockConstants (*prepare)(const TransformRequest& request);
  RunBlocks run_blocks;
  RowPairEnd finish_row_pair;
  LastRowsWalker walk_last_rows;
};

KernelSteps kernel_steps_of(const KernelAxes& axes);

}  // namespace kv
