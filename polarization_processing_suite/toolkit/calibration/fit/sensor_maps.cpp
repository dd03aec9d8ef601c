// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "toolkit/calibration/fit/sensor_maps.h"

#include <algorithm>
#include <cmath>
#include <string>

#include "kv/polarization/fault.h"
#include "toolkit/calibration/fit/robust.h"

namespace kv::polarization {
namespace {

// A pixel is out of range that far from the median of its class: so many robust deviations, and at
// least so far.
constexpr double kPixelDeviations = 7;
constexpr double kLeastGain = 0.05;  // share of the median
constexpr double kLeastDiattenuation = 0.05;
constexpr double kLeastOrientation = 2;  // degrees

/// From weights of the light to gain in counts, diattenuation and deviation from the nominal angle
/// by the source. A pixel that no light reaches has neither of the two latter.
void split_responses(const PixelGrid& grid, double source_dolp, WorkerPool& pool, PixelMaps& maps) {
  for_pixels(grid, pool, [&](std::size_t pixel, std::size_t number) {
    const double c0 = maps.gain[pixel];
    const double c1 = maps.diattenuation[pixel];
    const double c2 = maps.orientation[pixel];
    const bool lit = c0 > 0;
    maps.diattenuation[pixel] =
        lit ? static_cast<float>(std::hypot(c1, c2) / (c0 * source_dolp)) : 0.0f;
    maps.orientation[pixel] = lit ? static_cast<float>(half_turn(std::atan2(c2, c1) * kDegrees -
                                                                 45 * static_cast<double>(number)))
                                  : 0.0f;
  });
}

/// The middle of each class, and how far its pixels may be from it.
struct Range {
  double middle;
  double limit;
};
std::array<Range, 4> ranges_of(const PixelGrid& grid, const Buffer<float>& values,
                               const Buffer<std::uint8_t>& bad, double least, bool is_share) {
  std::array<Range, 4> ranges{};
  for (std::size_t number = 0; number < 4; ++number) {
    const RobustSpread spread = robust_spread(class_values(grid, values, bad, number));
    ranges[number] = {spread.median, std::max(kPixelDeviations * spread.deviation,
                                              is_share ? least * spread.median : least)};
  }
  return ranges;
}

bool is_within(const Range& range, float value) {
  return std::abs(value - range.middle) <= range.limit;
}

void mark_out_of_range(const PixelGrid& grid, WorkerPool& pool, PixelMaps& maps) {
  const auto gains = ranges_of(grid, maps.gain, maps.bad, kLeastGain, true);
  const auto diattenuations =
      ranges_of(grid, maps.diattenuation, maps.bad, kLeastDiattenuation, false);
  const auto orientations = ranges_of(grid, maps.orientation, maps.bad, kLeastOrientation, false);
  for_pixels(grid, pool, [&](std::size_t pixel, std::size_t number) {
    if (is_within(gains[number], maps.gain[pixel]) &&
        is_within(diattenuations[number], maps.diattenuation[pixel]) &&
        is_within(orientations[number], maps.orientation[pixel])) {
      return;
    }
    maps.bad[pixel] = static_cast<std::uint8_t>(maps.bad[pixel] | bad_pixel::out_of_range);
  });
}

/// Of the good pixels; 0 without one.
double good_mean(const Buffer<float>& values, const Buffer<std::uint8_t>& bad) {
  double sum = 0;
  double count = 0;
  for (std::size_t pixel = 0; pixel < values.size(); ++pixel) {
    if (bad[pixel] != 0) continue;
    sum += values[pixel];
    count += 1;
  }
  return count > 0 ? sum / count : 0;
}

/// By first-order propagation of the covariance of a class's responses.
void fill_errors(const PixelGrid& grid, const std::array<Eigen::Matrix3d, 4>& covariances,
                 double gain_unit, const Calibration& calibration, WorkerPool& pool,
                 PixelMaps& maps) {
  for_pixels(grid, pool, [&](std::size_t pixel, std::size_t number) {
    const double gain = maps.gain[pixel];
    if (!(gain > 0)) {
      maps.gain_error[pixel] = 0;
      maps.diattenuation_error[pixel] = 0;
      maps.orientation_error[pixel] = 0;
      return;
    }
    const Eigen::Matrix3d& covariance = covariances[number];
    const double c0 = gain * gain_unit;
    const double share = maps.diattenuation[pixel] * calibration.source_dolp;
    const double twice =
        (45 * static_cast<double>(number) + maps.orientation[pixel] - calibration.source_offset) /
        kDegrees;
    const Eigen::Vector3d along(-share, std::cos(twice), std::sin(twice));
    const Eigen::Vector3d across(0, -std::sin(twice), std::cos(twice));
    const double length = std::max(share, 1e-3) * c0;
    maps.gain_error[pixel] = static_cast<float>(std::sqrt(covariance(0, 0)) / gain_unit);
    maps.diattenuation_error[pixel] = static_cast<float>(std::sqrt(along.dot(covariance * along)) /
                                                         (c0 * calibration.source_dolp));
    maps.orientation_error[pixel] =
        static_cast<float>(std::sqrt(across.dot(covariance * across)) / length * kDegrees);
  });
}

}  // namespace

void finish_maps(const PixelGrid& grid, const ClassNormals& normals, const MapNoise& noise,
                 WorkerPool& pool, Calibration& calibration) {
  PixelMaps& maps = calibration.maps;
  split_responses(grid, calibration.source_dolp, pool, maps);
  mark_out_of_range(grid, pool, maps);
  for (std::size_t number = 0; number < 4; ++number) {
    if (!class_values(grid, maps.gain, maps.bad, number).empty()) continue;
    throw Fault(FaultKind::argument, "no pixel behind polarizers of " +
                                         std::to_string(45 * number) +
                                         " degrees is good; less light or other frames would help");
  }
  const double gain_unit = good_mean(maps.gain, maps.bad);
  calibration.source_offset = -good_mean(maps.orientation, maps.bad);
  const double turn = calibration.source_offset;
  for_pixels(grid, pool, [&](std::size_t pixel, std::size_t) {
    maps.gain[pixel] = static_cast<float>(maps.gain[pixel] / gain_unit);
    maps.orientation[pixel] = static_cast<float>(maps.orientation[pixel] + turn);
  });
  std::array<Eigen::Matrix3d, 4> covariances;
  for (std::size_t number = 0; number < 4; ++number) {
    const Eigen::Vector3d by_black = normals[number].black_error();
    covariances[number] = normals[number].covariance(noise.gain, noise.dark_variance) +
                          noise.black_variance * by_black * by_black.transpose();
  }
  fill_errors(grid, covariances, gain_unit, calibration, pool, maps);
}

}  // namespace kv::polarization
