// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "polarization_processor/records/kernel_axes.h"

namespace kv {

KernelAxes kernel_axes_of(const TransformRequest& request, bool sse41_available) {
  OutputSet outputs;
  for (const PlaneTraits& traits : kPlanes) {
    if (address_of(request, traits.plane) != nullptr) outputs.add(traits.plane);
  }
  const std::int32_t phase = request.polar_phase;
  const std::int32_t full_scale = (std::int32_t{1} << request.bit_depth) - 1;
  return {
      .encoding = {.outputs = outputs, .scaled = request.output_max_int != full_scale},
      .phase = phase >= 1 && phase <= 3 ? static_cast<std::uint32_t>(phase) : 0u,
      .even_height = (request.height & 1) == 0,
      .even_width = (request.width & 1) == 0,
      .sse41 = sse41_available,
  };
}

}  // namespace kv
