#pragma once

#include "traversal/kernel_axes.h"
#include "traversal/last_rows_walker.h"
#include "traversal/row_pair_end.h"
#include "vector/blocks.h"

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
