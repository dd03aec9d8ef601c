// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <array>
#include <cstdint>

#include "kv/polarization/buffer.h"
#include "kv/polarization/frame.h"
#include "kv/polarization/mosaic.h"
#include "toolkit/simulation/mosaic_camera.h"

namespace kv::polarization {

/// A sensor whose pixels differ, by default as those of real ones do. A pixel of gain G,
/// diattenuation D and orientation a, behind light of the Stokes values S0, S1, S2, holds
/// full_well * G / 2 (S0 + D cos(2a) S1 + D sin(2a) S2) electrons.
struct SimulatedSensorSettings {
  int width = 128;
  int height = 96;
  Mosaic mosaic{};
  int bit_depth = 12;
  std::uint64_t seed = 1;  ///< the same seed makes the same sensor and frames on every machine

  std::array<double, 4> class_gains = {0.98, 1, 0.98, 1};  ///< of 0, 45, 90 and 135 degrees
  std::array<double, 4> class_turns = {0, 0, 0, 0};        ///< degrees from the nominal angles
  double gain_scatter = 0.015;          ///< standard deviations from pixel to pixel
  double diattenuation = 0.95;          ///< mean
  double diattenuation_scatter = 0.02;  ///< no pixel is above 1
  double orientation_scatter = 1;       ///< degrees

  double black_level = 64;     ///< counts, mean
  double black_scatter = 1;    ///< counts
  double full_well = 10000;    ///< electrons from black to the greatest sample
  double read_noise = 2.5;     ///< electrons
  double bad_share = 0;        ///< of the pixels: a third each dead, hot and noisy
  bool temporal_noise = true;  ///< shot noise and read noise; rounding is always there
};

enum class PixelFlaw : std::uint8_t { none, dead, hot, noisy };

/// What each pixel of a simulated sensor is, row by row.
struct SensorTruth {
  Buffer<float> black;          ///< counts
  Buffer<float> gain;           ///< the class's included
  Buffer<float> diattenuation;  ///< at most 1
  Buffer<float> orientation;    ///< degrees, nominal angle and the class's turn included
  Buffer<std::uint8_t> flaws;   ///< PixelFlaw
};

/// Light that falls on the whole sensor, in units of its full scale.
struct SensorLight {
  Stokes stokes{};
  double gradient = 0;  ///< how much stronger it is at the right edge than at the left one, as a
                        ///< share of the mean
};

/// Through a perfect linear polarizer at that angle, in degrees.
SensorLight polarized_light(double s0, double angle, double gradient = 0);
/// Of a lamp without one.
SensorLight unpolarized_light(double s0, double gradient = 0);

class SimulatedSensor {
 public:
  explicit SimulatedSensor(const SimulatedSensorSettings& settings);

  const SimulatedSensorSettings& settings() const { return settings_; }
  const SensorTruth& truth() const { return truth_; }

  /// Frames of different numbers have different noise. A dark frame is one of no light.
  Frame take(const SensorLight& light, std::uint64_t number) const;
  Frame take(const LightField& light, std::uint64_t number) const;

 private:
  double electrons_of(std::size_t index, const Stokes& light) const;

  SimulatedSensorSettings settings_;
  SensorTruth truth_;
  Buffer<float> gain_cos_;  // G D cos(2a)
  Buffer<float> gain_sin_;  // G D sin(2a)
};

}  // namespace kv::polarization
