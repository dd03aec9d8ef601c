// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "toolkit/calibration/fit/sensor_noise.h"

#include <algorithm>
#include <cmath>

#include "toolkit/calibration/fit/robust.h"

namespace kv::polarization {
namespace {

/// One good pixel in a hundred million is beyond.
constexpr double kNoiseLimit = 5.6;

// A black level is defective that far from its class's: robust deviations, and share of the range.
constexpr double kBlackDeviations = 7;
constexpr double kBlackShare = 0.005;

/// Sums of squares in `values`, of that many degrees of freedom each, are marked in `maps` where
/// they are beyond what chance gives; returns the means of the others, by class.
ClassValues mark_noisy(const PixelGrid& grid, const Buffer<float>& values, double freedom,
                       double least_unit, bad_pixel::Reason reason, PixelMaps& maps) {
  ClassValues limits{};
  for (std::size_t number = 0; number < 4; ++number) {
    std::vector<float> chosen = class_values(grid, values, maps.bad, number);
    const double unit = std::max(least_unit, median_of(chosen) / chi_squared_at(freedom, 0));
    limits[number] = unit * chi_squared_at(freedom, kNoiseLimit);
  }
  ClassValues sums{};
  ClassValues counts{};
  for (int row = 0; row < grid.height; ++row) {
    for (int column = 0; column < grid.width; ++column) {
      const std::size_t pixel = pixel_count(grid.width, row) + static_cast<std::size_t>(column);
      const std::size_t number = grid.class_at(row, column);
      if (values[pixel] > limits[number]) {
        maps.bad[pixel] = static_cast<std::uint8_t>(maps.bad[pixel] | reason);
      }
      if (maps.bad[pixel] != 0) continue;
      sums[number] += values[pixel];
      counts[number] += 1;
    }
  }
  for (std::size_t number = 0; number < 4; ++number) sums[number] /= std::max(1.0, counts[number]);
  return sums;
}

void mark_black(const PixelGrid& grid, double range, PixelMaps& maps) {
  std::array<RobustSpread, 4> spreads;
  for (std::size_t number = 0; number < 4; ++number) {
    spreads[number] = robust_spread(class_values(grid, maps.black, maps.bad, number));
  }
  for (int row = 0; row < grid.height; ++row) {
    for (int column = 0; column < grid.width; ++column) {
      const std::size_t pixel = pixel_count(grid.width, row) + static_cast<std::size_t>(column);
      const RobustSpread& spread = spreads[grid.class_at(row, column)];
      const double limit = std::max(kBlackDeviations * spread.deviation, kBlackShare * range);
      if (std::abs(maps.black[pixel] - spread.median) <= limit) continue;
      maps.bad[pixel] = static_cast<std::uint8_t>(maps.bad[pixel] | bad_pixel::dark_defect);
    }
  }
}

}  // namespace

std::optional<double> fill_black(const PixelGrid& grid, const PixelSums& sums, std::size_t frames,
                                 const ClassValues& reference, double range, PixelMaps& maps) {
  const auto count = static_cast<double>(frames);
  Buffer<float> squares(grid.pixels());
  for (int row = 0; row < grid.height; ++row) {
    for (int column = 0; column < grid.width; ++column) {
      const std::size_t pixel = pixel_count(grid.width, row) + static_cast<std::size_t>(column);
      const double sum = sums.dark()[pixel];
      // The sums were made with the reference in floats.
      const double level = static_cast<float>(reference[grid.class_at(row, column)]);
      maps.black[pixel] = static_cast<float>(level + sum / count);
      squares[pixel] =
          static_cast<float>(std::max(0.0, sums.dark_squares()[pixel] - sum * sum / count));
    }
  }
  mark_black(grid, range, maps);
  if (frames < 2) return std::nullopt;
  constexpr double rounding = 1.0 / 12;  // variance that whole counts have at least
  const ClassValues means =
      mark_noisy(grid, squares, count - 1, rounding, bad_pixel::dark_defect, maps);
  return vector_of(means).mean() / (count - 1);
}

ClassValues mean_residuals(const PixelGrid& grid, const Buffer<float>& residuals, double freedom,
                           PixelMaps& maps) {
  return mark_noisy(grid, residuals, freedom, 0, bad_pixel::noisy, maps);
}

double photon_transfer_gain(const ClassNormals& normals, const ClassValues& residuals,
                            double dark_variance) {
  double observed = 0;
  double of_signal = 0;
  for (std::size_t number = 0; number < 4; ++number) {
    observed += residuals[number] - normals[number].expected_residual(0, dark_variance);
    of_signal += normals[number].expected_residual(1, 0);
  }
  return observed / of_signal;
}

}  // namespace kv::polarization
