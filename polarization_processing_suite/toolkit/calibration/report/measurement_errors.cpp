// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "toolkit/calibration/report/measurement_errors.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace kv::polarization {
namespace {

constexpr double kRadian = std::numbers::pi / 180;

// Second and fourth powers of sines are averaged exactly by any number of angles above 4.
constexpr int kAngles = 16;

double square(double value) { return value * value; }

/// What a sample, in units of S0, changes by for a unit of each deviation.
PixelDeviation response(double dolp, double diattenuation, double cosine, double sine) {
  return {(1 + diattenuation * dolp * cosine) / 2, dolp * cosine / 2, -diattenuation * dolp * sine};
}

double change(const PixelDeviation& response, const PixelDeviation& deviation) {
  return response.gain * deviation.gain + response.diattenuation * deviation.diattenuation +
         response.orientation * deviation.orientation;
}

double variance(const PixelDeviation& response, const PixelDeviation& scatter) {
  return square(response.gain * scatter.gain) +
         square(response.diattenuation * scatter.diattenuation) +
         square(response.orientation * scatter.orientation);
}

}  // namespace

CellDeviations uncalibrated(const Calibration& calibration) {
  CellDeviations deviations;
  for (std::size_t i = 0; i < 4; ++i) {
    const PixelClass& pixels = calibration.classes[i];
    deviations.common[i] = {pixels.gain.value - 1, pixels.diattenuation.value - 1,
                            (pixels.orientation.value - pixels.nominal_angle) * kRadian};
    deviations.scatter[i] = {pixels.gain_scatter, pixels.diattenuation_scatter,
                             pixels.orientation_scatter * kRadian};
  }
  return deviations;
}

CellDeviations calibrated(const Calibration& calibration,
                          const std::array<std::array<PropertySample, 4>, 3>& samples) {
  CellDeviations deviations;
  deviations.diattenuation = 0;
  for (std::size_t i = 0; i < 4; ++i) {
    deviations.scatter[i] = {samples[0][i].noise, samples[1][i].noise,
                             samples[2][i].noise * kRadian};
    deviations.diattenuation += calibration.classes[i].diattenuation.value / 4;
  }
  return deviations;
}

StokesErrors errors_of(const CellDeviations& deviations, const SensorNoise& noise,
                       const Measurement& measurement) {
  const auto [s0, dolp, frames] = measurement;
  const double diattenuation = deviations.diattenuation;
  double dolp_square = 0;
  double angle_square = 0;
  for (int step = 0; step < kAngles; ++step) {
    const double direction = std::numbers::pi * step / kAngles;
    double dolp_bias = 0;
    double angle_bias = 0;
    for (std::size_t i = 0; i < 4; ++i) {
      const double turn = 2 * (std::numbers::pi / 4 * static_cast<double>(i) - direction);
      const double cosine = std::cos(turn);
      const double sine = std::sin(turn);
      const PixelDeviation unit = response(dolp, diattenuation, cosine, sine);
      const double counts = s0 * unit.gain;
      const double sample_variance =
          variance(unit, deviations.scatter[i]) +
          static_cast<double>(noise.variance(static_cast<float>(counts))) / (square(s0) * frames);
      const double dolp_weight = cosine / diattenuation - dolp / 2;
      const double angle_weight = sine / (2 * dolp * diattenuation);
      dolp_bias += dolp_weight * change(unit, deviations.common[i]);
      angle_bias += angle_weight * change(unit, deviations.common[i]);
      dolp_square += square(dolp_weight) * sample_variance;
      angle_square += square(angle_weight) * sample_variance;
    }
    dolp_square += square(dolp_bias);
    angle_square += square(angle_bias);
  }
  const double angle = std::sqrt(angle_square / kAngles) / kRadian;
  return {std::sqrt(dolp_square / kAngles), angle > kChanceAngle ? kChanceAngle : angle};
}

}  // namespace kv::polarization
