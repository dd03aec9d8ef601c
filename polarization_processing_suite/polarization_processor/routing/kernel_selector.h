#pragma once

#include "coefficient_set.h"
#include "transform_request.h"

namespace kv {

/// Hands the frame to the one kernel that its axes name.
void select_kernel(const TransformRequest& request, const PhaseView& view, bool sse41_available);

}  // namespace kv
