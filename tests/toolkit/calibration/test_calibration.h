// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cmath>
#include <cstdint>
#include <numbers>
#include <random>

#include "kv/calibration/calibration.h"
#include "kv/polarization/frame.h"

/// A made-up sensor whose pixels scatter around classes of their own; no bad ones.
inline kv::polarization::Calibration made_calibration(int width, int height,
                                                      const kv::polarization::Mosaic& mosaic,
                                                      int bit_depth, double scatter = 0.02) {
  using namespace kv::polarization;
  Calibration made;
  made.width = width;
  made.height = height;
  made.mosaic = mosaic;
  made.bit_depth = bit_depth;
  made.clip_level = static_cast<std::uint16_t>(full_scale(bit_depth));
  made.noise = {0.4f, 2.5f};
  made.condition = 1.5;
  const double black = full_scale(bit_depth) / 64.0;
  for (int i = 0; i < 4; ++i) {
    PixelClass& all = made.classes[static_cast<std::size_t>(i)];
    all.nominal_angle = 45 * i;
    all.pixels = static_cast<std::uint64_t>(width) * static_cast<std::uint64_t>(height) / 4;
    all.black = {black + i, 0.01};
    all.gain = {1 + 0.03 * (i - 1.5), 1e-4};
    all.diattenuation = {0.96 - 0.03 * i, 1e-4};
    all.orientation = {45.0 * i + 0.8 * (i - 1.5), 1e-3};
  }
  PixelMaps& maps = made.maps;
  const std::size_t pixels = pixel_count(width, height);
  for (auto* map : {&maps.black, &maps.gain, &maps.diattenuation, &maps.orientation,
                    &maps.gain_error, &maps.diattenuation_error, &maps.orientation_error}) {
    map->resize(pixels);
    for (float& value : *map) value = 1e-3f;
  }
  maps.bad.resize(pixels);
  std::mt19937 random(7);
  const auto draw = [&] { return scatter * (static_cast<double>(random() % 2001) / 1000 - 1); };
  const CellAngles angles = cell_angles(mosaic);
  for (std::size_t pixel = 0; pixel < pixels; ++pixel) {
    const auto side = static_cast<std::size_t>(width);
    const std::size_t place = pixel / side % 2 * 2 + pixel % side % 2;
    const PixelClass& all = made.classes[static_cast<std::size_t>(angles[place] / 45)];
    maps.black[pixel] = static_cast<float>(all.black.value + 50 * draw());
    maps.gain[pixel] = static_cast<float>(all.gain.value + draw());
    maps.diattenuation[pixel] = static_cast<float>(all.diattenuation.value + draw());
    maps.orientation[pixel] =
        static_cast<float>(all.orientation.value - angles[place] + 20 * draw());
    maps.bad[pixel] = 0;
  }
  return made;
}

/// Counts above black, as the sample of an ideal sensor would be.
struct TestLight {
  double s0;
  double dolp;
  double angle;  ///< degrees
};

/// What the pixel at a place of the calibrated region reads from the light, by the model itself.
inline double reading(const kv::polarization::Calibration& sensor, int column, int row,
                      const TestLight& light) {
  const auto angles = kv::polarization::cell_angles(sensor.mosaic);
  const std::size_t pixel =
      kv::polarization::pixel_count(sensor.width, row) + static_cast<std::size_t>(column);
  const double orientation = angles[static_cast<std::size_t>(row % 2 * 2 + column % 2)] +
                             double{sensor.maps.orientation[pixel]};
  const double turn = (light.angle - orientation) * std::numbers::pi / 90;
  return sensor.maps.black[pixel] +
         sensor.maps.gain[pixel] / 2 * light.s0 *
             (1 + sensor.maps.diattenuation[pixel] * light.dolp * std::cos(turn));
}
