// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <array>
#include <cstddef>
#include <optional>

#include "kevrinth_qrm_polarization_processor.h"

namespace kv::polarization {

/// How the polarizers lie behind a frame: those of the sensor's first pixels, and which pixel of
/// the sensor is the frame's first, for regions of interest.
struct Mosaic {
  PolarPhase phase = kv_polar_phase_0;  ///< polarizer behind the sensor's top-left pixel
  int x_origin = 0;  ///< column of the frame's first pixel on the sensor, from 0 up
  int y_origin = 0;  ///< row of the frame's first pixel on the sensor, from 0 up
};

/// Angles in degrees of the polarizers behind a cell's pixels: top left, top right, bottom left,
/// bottom right.
using CellAngles = std::array<int, 4>;

/// Of the sensor's first cell.
constexpr CellAngles cell_angles(PolarPhase phase) {
  switch (phase) {
    case kv_polar_phase_45:
      return {45, 90, 0, 135};
    case kv_polar_phase_90:
      return {90, 45, 135, 0};
    case kv_polar_phase_135:
      return {135, 0, 90, 45};
    default:
      return {0, 135, 45, 90};
  }
}

/// Of the frame's first cell.
constexpr CellAngles cell_angles(const Mosaic& mosaic) {
  const CellAngles sensor = cell_angles(mosaic.phase);
  CellAngles frame{};
  for (std::size_t place = 0; place < frame.size(); ++place) {
    const bool odd_column = (place % 2 != 0) != (mosaic.x_origin % 2 != 0);
    const bool odd_row = (place / 2 != 0) != (mosaic.y_origin % 2 != 0);
    frame[place] = sensor[(odd_row ? 2u : 0u) + (odd_column ? 1u : 0u)];
  }
  return frame;
}

/// The phase whose first polarizer stands at 0, 45, 90 or 135 degrees; none for other angles.
constexpr std::optional<PolarPhase> phase_at(int degrees) {
  for (PolarPhase phase = kv_polar_phase_0; phase <= kv_polar_phase_135; ++phase) {
    if (cell_angles(phase)[0] == degrees) return phase;
  }
  return std::nullopt;
}

}  // namespace kv::polarization
