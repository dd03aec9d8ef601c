#include "polarization_processor/routing/route_transform.h"

#include "polarization_processor/routing/kernel_selector.h"

namespace kv {
namespace {

/// Every phase but 1, 2 and 3, a negative one included, is seen as phase 0.
const PhaseView& view_of_phase(const PolarizationProcessor& instance, std::int32_t phase) {
  return instance.phase_views[phase >= 1 && phase <= 3 ? static_cast<std::size_t>(phase) : 0];
}

/// The module of the instance's own tier, if it is usable. There is no chain of tiers.
const VectorBackend* backend_of(const PolarizationProcessor& instance) {
  const VectorBackend* backend = nullptr;
  if (instance.cpu_tier == CpuTier::avx512) backend = &instance.avx512_backend;
  if (instance.cpu_tier == CpuTier::avx2) backend = &instance.avx2_backend;
  return backend != nullptr && backend->usable() ? backend : nullptr;
}

}  // namespace

void route_transform(const PolarizationProcessor& instance, const TransformRequest& request,
                     bool sse41_available) {
  const PhaseView& view = view_of_phase(instance, request.polar_phase);
  if (const VectorBackend* const backend = backend_of(instance)) {
    backend->transform(instance, request, view, sse41_available);
  } else {
    select_kernel(request, view, sse41_available);
  }
}

}  // namespace kv
