#pragma once

#include "processor_instance.h"
#include "transform_request.h"

namespace kv {

/// Fills the requested planes from the frame with the weights of the instance.
void route_transform(const PolarizationProcessor& instance, const TransformRequest& request,
                     bool sse41_available);

}  // namespace kv
