// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include <algorithm>
#include <cmath>

#include "kv/calibration/analyser.h"
#include "toolkit/calibration/fit/sensor_maps.h"

namespace kv::polarization {
namespace {

/// Mean, its error by noise, and scatter without noise.
struct Summary {
  Measured mean;
  double scatter = 0;
};

class Gatherer {
 public:
  void add(double value, double error) {
    sum_ += value;
    squares_ += value * value;
    error_squares_ += error * error;
    count_ += 1;
  }
  Summary summary() const {
    if (count_ == 0) return {};
    const double mean = sum_ / count_;
    const double noise = error_squares_ / count_;
    const double spread = squares_ / count_ - mean * mean;
    return {{mean, std::sqrt(noise / count_)}, std::sqrt(std::max(0.0, spread - noise))};
  }

 private:
  double sum_ = 0;
  double squares_ = 0;
  double error_squares_ = 0;
  double count_ = 0;
};

}  // namespace

void summarise(const PixelGrid& grid, double black_variance, Calibration& calibration) {
  const PixelMaps& maps = calibration.maps;
  struct Gathered {
    Gatherer black, gain, diattenuation, orientation;
    std::uint64_t pixels = 0;
  };
  std::array<Gathered, 4> classes;
  for (int row = 0; row < grid.height; ++row) {
    for (int column = 0; column < grid.width; ++column) {
      const std::size_t pixel = pixel_count(grid.width, row) + static_cast<std::size_t>(column);
      if (maps.bad[pixel] != 0) continue;
      Gathered& gathered = classes[grid.class_at(row, column)];
      gathered.black.add(maps.black[pixel], std::sqrt(black_variance));
      gathered.gain.add(maps.gain[pixel], maps.gain_error[pixel]);
      gathered.diattenuation.add(maps.diattenuation[pixel], maps.diattenuation_error[pixel]);
      gathered.orientation.add(maps.orientation[pixel], maps.orientation_error[pixel]);
      ++gathered.pixels;
    }
  }
  for (std::size_t number = 0; number < 4; ++number) {
    PixelClass& pixels = calibration.classes[number];
    const Gathered& gathered = classes[number];
    const Summary gain = gathered.gain.summary();
    const Summary diattenuation = gathered.diattenuation.summary();
    const Summary orientation = gathered.orientation.summary();
    pixels.nominal_angle = 45 * static_cast<int>(number);
    pixels.pixels = gathered.pixels;
    pixels.black = gathered.black.summary().mean;
    pixels.gain = gain.mean;
    pixels.diattenuation = diattenuation.mean;
    pixels.orientation = orientation.mean;
    pixels.orientation.value += pixels.nominal_angle;
    pixels.gain_scatter = gain.scatter;
    pixels.diattenuation_scatter = diattenuation.scatter;
    pixels.orientation_scatter = orientation.scatter;
  }
  calibration.condition = condition_of(analyser_matrix(class_responses(calibration)));
}

}  // namespace kv::polarization
