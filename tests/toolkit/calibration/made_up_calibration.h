// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cmath>
#include <random>

#include "kv/calibration/calibration.h"
#include "kv/polarization/frame.h"

/// A calibration as a fit could have found it: classes that differ, pixels that scatter, a gain
/// that falls towards the corners.
inline kv::polarization::Calibration made_up_calibration(int width, int height) {
  using namespace kv::polarization;
  Calibration made;
  made.width = width;
  made.height = height;
  made.mosaic.phase = kv_polar_phase_90;
  made.bit_depth = 12;
  made.clip_level = 4095;
  made.noise = {0.37f, 2.3f};
  made.condition = 1.4312;
  made.source_offset = 12.3456;
  made.source_dolp = 0.9999;
  constexpr double gains[] = {1.012, 0.993, 0.985, 1.010};
  constexpr double turns[] = {0.31, -0.22, 0.14, -0.23};
  for (std::size_t i = 0; i < 4; ++i) {
    const int angle = 45 * static_cast<int>(i);
    made.classes[i] = {angle,
                       pixel_count(width, height) / 4,
                       {240.12 + static_cast<double>(i), 0.013},
                       {gains[i], 0.0000213},
                       {0.9871 - 0.002 * static_cast<double>(i), 0.0000345},
                       {angle + turns[i], 0.00123},
                       0.0102,
                       0.0031,
                       0.271};
  }

  const std::size_t pixels = pixel_count(width, height);
  PixelMaps& maps = made.maps;
  for (Buffer<float>* map :
       {&maps.black, &maps.gain, &maps.diattenuation, &maps.orientation, &maps.gain_error,
        &maps.diattenuation_error, &maps.orientation_error}) {
    map->resize(pixels);
  }
  maps.bad.resize(pixels);
  std::mt19937 random(7);
  std::normal_distribution<double> normal;
  const CellAngles angles = cell_angles(made.mosaic);
  for (std::size_t i = 0; i < pixels; ++i) {
    const auto column = static_cast<int>(i) % width;
    const auto row = static_cast<int>(i) / width;
    const PixelClass& pixel = made.classes[static_cast<std::size_t>(
        angles[static_cast<std::size_t>(row % 2 * 2 + column % 2)] / 45)];
    const double x = 2.0 * column / width - 1;
    const double y = 2.0 * row / height - 1;
    const auto around = [&](double mean, double scatter) {
      return static_cast<float>(mean + scatter * normal(random));
    };
    maps.black[i] = around(pixel.black.value, 0.5);
    maps.gain[i] = around(pixel.gain.value + 0.008 - 0.012 * (x * x + y * y), 0.0088);
    maps.diattenuation[i] = around(pixel.diattenuation.value + 0.001 * x, 0.003);
    maps.orientation[i] =
        around(pixel.orientation.value - pixel.nominal_angle + 0.1 * std::sin(4 * y) * x, 0.26);
    maps.gain_error[i] = 0.0021f;
    maps.diattenuation_error[i] = 0.0028f;
    maps.orientation_error[i] = 0.085f;
    maps.bad[i] = 0;
  }

  for (int i = 0; i < 36; ++i) {
    FrameRecord frame;
    frame.name = "frames/polarizer_" + std::to_string(5 * i) + ".tiff";
    frame.angle = 5 * i;
    frame.used = true;
    frame.level = 1480 + 10 * normal(random);
    frame.angle_deviation = 0.03 * std::sin(i / 3.0) + 0.005 * normal(random);
    frame.excess = 1.02 + 0.01 * normal(random);
    made.frames.push_back(frame);
  }
  made.findings = {
      {"cross-validation: DoLP", 0.00312, 0.00305, "", true,
       "frames left out are met as noise allows"},
      {"angles of the frames", 0.0213, 0.0187, "°", true,
       "the polarizer was where it was said to be"},
  };
  made.camera = "Example P5, serial number 0042";
  made.date = "2024-05-17";
  made.software = "kv-polarize 9.8.7";
  return made;
}
