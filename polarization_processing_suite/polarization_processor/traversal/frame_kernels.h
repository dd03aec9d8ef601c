#pragma once

#include "polarization_processor/records/coefficient_set.h"
#include "polarization_processor/records/transform_request.h"
#include "polarization_processor/traversal/kernel_axes.h"

namespace kv {

/// Turns one frame into the planes of the request. Its axes are what it is; it takes no flag.
using FrameKernel = void (*)(const TransformRequest& request, const PhaseView& view);

FrameKernel frame_kernel_at(const KernelAxes& axes);

}  // namespace kv
