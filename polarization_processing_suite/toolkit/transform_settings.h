#pragma once

#include <array>
#include <cstdint>
#include <optional>

#include "kevrinth_qrm_polarization_processor.h"
#include "planes/plane_list.h"

namespace kv {

/// How the mosaic lies under the frame, and what is wanted of it.
struct TransformSettings {
  PolarPhase phase = kv_polar_phase_0;  ///< polarizer behind the sensor's top-left pixel
  int x_origin = 0;                     ///< column of the frame's first pixel on the sensor
  int y_origin = 0;                     ///< row of the frame's first pixel on the sensor
  std::uint16_t output_max = 65535;     ///< full scale of the 16-bit planes
  OutputSet planes = OutputSet::all();
};

/// The phase whose first polarizer stands at 0, 45, 90 or 135 degrees; none for other angles.
constexpr std::optional<PolarPhase> phase_at(int degrees) {
  constexpr std::array<int, 4> angles = {0, 45, 90, 135};
  for (PolarPhase phase = kv_polar_phase_0; phase <= kv_polar_phase_135; ++phase) {
    if (angles[static_cast<std::size_t>(phase)] == degrees) return phase;
  }
  return std::nullopt;
}

}  // namespace kv
