#include "routing/route_transform.h"

#include "routing/kernel_selector.h"

namespace kv {
namespace {

/// Every phase but 1, 2 and 3, a negative one included, is seen as phase 0.
const PhaseView& view_of_phase(const PolarizationProcessor& instance, std::int32_t phase) {
  return instance.phase_views[phase >= 1 && phase <= 3 ? static_cast<std::size_t>(phase) : 0];
}

}  // namespace

void route_transform(const PolarizationProcessor& instance, const TransformRequest& request,
                     bool sse41_available) {
  select_kernel(request, view_of_phase(instance, request.polar_phase), sse41_available);
}

}  // namespace kv
