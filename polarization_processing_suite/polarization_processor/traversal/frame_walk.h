#pragma once

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

/// Takes a frame from the top down: row pairs, each of vector blocks and a scalar end, then the
/// last rows.
void walk_frame(const TransformRequest& request, const PhaseView& view, const KernelSteps& steps);

}  // namespace kv
