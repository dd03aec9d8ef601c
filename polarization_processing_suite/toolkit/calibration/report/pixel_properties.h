// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <array>
#include <cstddef>
#include <string_view>
#include <vector>

#include "kv/calibration/calibration.h"

namespace kv::polarization {

/// What is found of each pixel, and how to show it.
struct PixelProperty {
  std::string_view name;
  std::string_view unit;  ///< in which deviations are shown; empty for pure numbers
  double scale;           ///< from the map's numbers to that unit
  Buffer<float> PixelMaps::*values;
  Buffer<float> PixelMaps::*errors;
};

inline constexpr std::array<PixelProperty, 3> kPixelProperties{{
    {"Gain", "%", 100, &PixelMaps::gain, &PixelMaps::gain_error},
    {"Diattenuation", "", 1, &PixelMaps::diattenuation, &PixelMaps::diattenuation_error},
    {"Orientation", "°", 1, &PixelMaps::orientation, &PixelMaps::orientation_error},
}};

/// Calls action(class_index, column, row, index) for every pixel, row by row.
template <class Action>
void for_each_pixel(const Calibration& calibration, Action action) {
  const CellAngles angles = cell_angles(calibration.mosaic);
  std::size_t index = 0;
  for (int row = 0; row < calibration.height; ++row) {
    for (int column = 0; column < calibration.width; ++column, ++index) {
      const auto place = static_cast<std::size_t>(row % 2 * 2 + column % 2);
      action(static_cast<std::size_t>(angles[place] / 45), column, row, index);
    }
  }
}

/// A property of the good pixels of a class; those that are not finite are left out.
struct PropertySample {
  std::vector<float> values;
  double mean = 0;
  double scatter = 0;  ///< standard deviation, noise included; 0 for fewer than two pixels
  double noise = 0;    ///< rms of their errors
};

std::array<PropertySample, 4> samples_of(const Calibration& calibration,
                                         const PixelProperty& property);

}  // namespace kv::polarization
