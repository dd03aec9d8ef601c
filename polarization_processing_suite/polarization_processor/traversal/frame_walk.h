#pragma once

#include "polarization_processor/traversal/kernel_steps.h"

namespace kv {

/// Takes a frame from the top down: row pairs, each of vector blocks and a weighed end, then the
/// last rows.
void walk_frame(const TransformRequest& request, const PhaseView& view, const KernelSteps& steps);

}  // namespace kv
