#pragma once

#include "traversal/last_rows_walker.h"
#include "traversal/row_pair_end.h"

namespace kv {

/// What tells one frame kernel from another.
struct KernelSteps {
  RowPairEnd finish_row_pair;
  LastRowsWalker walk_last_rows;
};

/// Takes a frame from the top down: row pairs, then what they leave over.
void walk_frame(const TransformRequest& request, const PhaseView& view, const KernelSteps& steps);

}  // namespace kv
