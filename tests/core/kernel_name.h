// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>

#include "polarization_processor/records/kernel_axes.h"

namespace kv::test {

/// The planes joined by +, then the other axes, as in
/// "intensity+dolp_scaled_phase2_even_height_odd_width_sse41".
inline std::string kernel_name(const KernelAxes& axes) {
  std::string planes;
  for (const PlaneTraits& traits : kPlanes) {
    if (!axes.encoding.outputs.has(traits.plane)) continue;
    planes += (planes.empty() ? "" : "+") + std::string(traits.name);
  }
  return planes + (axes.encoding.scaled ? "_scaled" : "_unscaled") + "_phase" +
         std::to_string(axes.phase) + (axes.even_height ? "_even_height" : "_odd_height") +
         (axes.even_width ? "_even_width" : "_odd_width") + (axes.sse41 ? "_sse41" : "_sse2");
}

}  // namespace kv::test
