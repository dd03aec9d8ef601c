#pragma once

#include <string>

#include "polarization_processor/traversal/kernel_axes.h"

namespace kv {

/// For people: the planes joined by +, then the axes that are set, as in
/// "intensity+dolp_scaled_phase2_even_height_odd_width_sse41".
inline std::string kernel_name(const KernelAxes& axes) {
  const OutputSet& outputs = axes.encoding.outputs;
  std::string planes;
  const auto add = [&](bool wanted, const char* plane) {
    if (wanted) planes += (planes.empty() ? "" : "+") + std::string(plane);
  };
  add(outputs.normalized_stokes, "normalized_stokes");
  add(outputs.intensity, "intensity");
  add(outputs.stokes_s1, "stokes_s1");
  add(outputs.stokes_s2, "stokes_s2");
  add(outputs.azimuth, "azimuth");
  add(outputs.dolp, "dolp");
  return planes + (axes.encoding.scaled ? "_scaled" : "_unscaled") + "_phase" +
         std::to_string(axes.phase) + (axes.even_height ? "_even_height" : "_odd_height") +
         (axes.even_width ? "_even_width" : "_odd_width") + (axes.sse41 ? "_sse41" : "_sse2");
}

}  // namespace kv
