#pragma once

#include "polarization_processor/processor_instance.h"
#include "polarization_processor/records/transform_request.h"

namespace kv {

/// Fills the requested planes from the frame: by the vector module of the instance's tier, or else
/// by the library's own kernels.
void route_transform(const PolarizationProcessor& instance, const TransformRequest& request,
                     bool sse41_available);

}  // namespace kv
