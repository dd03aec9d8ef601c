#pragma once

#include "coefficient_set.h"
#include "transform_request.h"
#include "traversal/kernel_axes.h"

namespace kv {

KernelAxes kernel_axes_of(const TransformRequest& request, bool sse41_available);

/// Hands the frame to the one kernel that its axes name.
void select_kernel(const TransformRequest& request, const PhaseView& view, bool sse41_available);

}  // namespace kv
