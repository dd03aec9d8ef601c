// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "toolkit/calibration/identify/diagonal_light.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "toolkit/api/packed_frame.h"

namespace kv::polarization {
namespace {

/// Sums over cells; whole numbers, and so exact.
struct Sums {
  double cells = 0;
  double own = 0, other = 0;  // sums of the diagonals, black included
  double x = 0, y = 0;        // differences along them
  double xx = 0, xy = 0, yy = 0;

  void add(double top_left, double top_right, double bottom_left, double bottom_right) {
    const double along = top_left - bottom_right;
    const double across = top_right - bottom_left;
    ++cells;
    own += top_left + bottom_right;
    other += top_right + bottom_left;
    x += along;
    y += across;
    xx += along * along;
    xy += along * across;
    yy += across * across;
  }
};

Sums sums_of(const FramePart& frame, const Rectangle& region) {
  Sums sums;
  const int full = full_scale(frame.bit_depth);
  const int first_row = region.row + region.row % 2;
  const int first_column = region.column + region.column % 2;
  for (int row = first_row; row + 1 < region.row + region.height; row += 2) {
    const std::uint16_t* upper = frame.samples + pixel_count(frame.width, row);
    const std::uint16_t* lower = upper + frame.width;
    for (int column = first_column; column + 1 < region.column + region.width; column += 2) {
      const int greatest =
          std::max({upper[column], upper[column + 1], lower[column], lower[column + 1]});
      if (greatest >= full) continue;
      sums.add(upper[column], upper[column + 1], lower[column], lower[column + 1]);
    }
  }
  return sums;
}

}  // namespace

DiagonalLight diagonal_light(const FrameView& frame, const Rectangle& region, double black_level) {
  Buffer<std::uint16_t> room;
  const Sums sums = sums_of(packed(frame, {}, room), region);
  DiagonalLight light;
  const double n = sums.cells;
  const double s0 = (sums.own + sums.other) / (2 * n) - 2 * black_level;
  const double x = sums.x / n;
  const double y = sums.y / n;
  const double length = std::hypot(x, y);
  light.dolp = n > 0 && s0 > 0 ? length / s0 : std::nan("");
  light.angle = std::atan2(y, x) * 90 / std::numbers::pi;
  light.imbalance = (sums.own - sums.other) / n / s0;
  // Scatter of single cells along the vector of differences and across it; of none, no direction.
  const double cosine = length > 0 ? x / length : 1;
  const double sine = length > 0 ? y / length : 0;
  const double xx = sums.xx / n - x * x;
  const double xy = sums.xy / n - x * y;
  const double yy = sums.yy / n - y * y;
  const double rounding = 1.0 / 6;  // of a difference of two whole numbers
  const double along = xx * cosine * cosine + 2 * xy * cosine * sine + yy * sine * sine;
  const double across = xx * sine * sine - 2 * xy * cosine * sine + yy * cosine * cosine;
  light.dolp_sigma = std::sqrt(std::max(along, rounding) / n) / s0;
  light.angle_sigma = std::sqrt(std::max(across, rounding) / n) / length * 90 / std::numbers::pi;
  return light;
}

}  // namespace kv::polarization
