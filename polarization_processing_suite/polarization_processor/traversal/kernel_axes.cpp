#include "polarization_processor/traversal/kernel_axes.h"

namespace kv {

KernelAxes kernel_axes_of(const TransformRequest& request, bool sse41_available) {
  const std::int32_t phase = request.polar_phase;
  const std::int32_t full_scale = (std::int32_t{1} << request.bit_depth) - 1;
  return {
      .phase = phase >= 1 && phase <= 3 ? static_cast<std::uint32_t>(phase) : 0u,
      .encoding = {.outputs = {.normalized_stokes = request.normalized_stokes != nullptr,
                               .intensity = request.intensity != nullptr,
                               .stokes_s1 = request.stokes_s1 != nullptr,
                               .stokes_s2 = request.stokes_s2 != nullptr,
                               .azimuth = request.azimuth != nullptr,
                               .dolp = request.dolp != nullptr},
                   .scaled = request.output_max_int != full_scale},
      .even_height = (request.height & 1) == 0,
      .even_width = (request.width & 1) == 0,
      .sse41 = sse41_available,
  };
}

}  // namespace kv
