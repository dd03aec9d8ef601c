// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "kv/polarization/region.h"

#include <cmath>
#include <limits>
#include <numbers>
#include <string>

#include "toolkit/api/maps/map_checks.h"
#include "toolkit/api/maps/propagation.h"
#include "toolkit/api/maps/rescue.h"
#include "toolkit/api/memory_checks.h"
#include "toolkit/api/packed_frame.h"
#include "toolkit/api/request_checks.h"

namespace kv::polarization {
namespace {

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

/// Adds up cells that share no sample, and whose upper left pixels are all behind one polarizer.
class CellSum {
 public:
  CellSum(const FramePart& frame, const Mosaic& mosaic, const SampleSettings& settings)
      : frame_(frame),
        mosaic_(mosaic),
        settings_(settings),
        clip_level_(
            settings.clip_level.value_or(static_cast<std::uint16_t>(full_scale(frame.bit_depth)))) {
  }

  void add(int row, int column) {
    std::array<double, 4> samples{};
    std::array<double, 4> variances{};
    std::array<std::uint8_t, 4> flags{};
    std::uint8_t joined = 0;
    for (std::size_t place = 0; place < 4; ++place) {
      const int y = row + static_cast<int>(place / 2);
      const int x = column + static_cast<int>(place % 2);
      const int sample = frame_.samples[pixel_count(frame_.width, y) + static_cast<std::size_t>(x)];
      flags[place] = static_cast<std::uint8_t>((sample >= clip_level_ ? quality::clipped : 0) |
                                               (is_bad(y, x) ? quality::bad_pixel : 0));
      joined |= flags[place];
      const float counts = static_cast<float>(sample) - settings_.black_level;
      samples[place] = counts;
      if (settings_.noise) variances[place] = settings_.noise->variance(counts);
    }
    const std::size_t rescued = settings_.rescue ? only_clipped(flags) : kNoPlace;
    if (rescued != kNoPlace) joined |= quality::rescued;
    if (!count(joined)) return;
    if (rescued != kNoPlace) rebuild(rescued, samples);
    const auto [own, right, lower, diagonal] = samples;
    s0_ += (own + right + lower + diagonal) / 2;
    a_ += own - diagonal;
    b_ += right - lower;
    add(rescued == kNoPlace ? moments_of(variances[0], variances[1], variances[2], variances[3])
                            : rescued_moments<double>(rescued, variances, {1, 1, 1, 1}));
  }

  /// For cells that begin at polarizers of those angles.
  RegionStatistics statistics(int own_degrees, int right_degrees) const {
    RegionStatistics result = counts_;
    const auto cells = static_cast<double>(result.cells);
    const ContrastRotation rotation = rotation_of(own_degrees, right_degrees);
    const bool has_noise = settings_.noise && result.cells > 0;
    const auto sigma = [&](double variance) {
      return has_noise ? std::sqrt(variance) / cells : kNan;
    };
    const bool a_is_s1 = rotation.s1_a != 0;
    result.s0 = s0_ / cells;  // a NaN without cells
    result.s1 = (rotation.s1_a * a_ + rotation.s1_b * b_) / cells;
    result.s2 = (rotation.s2_a * a_ + rotation.s2_b * b_) / cells;
    result.s0_sigma = sigma(moments_.s0_s0);
    result.s1_sigma = sigma(a_is_s1 ? moments_.a_a : moments_.b_b);
    result.s2_sigma = sigma(a_is_s1 ? moments_.b_b : moments_.a_a);
    find_polarization(has_noise, result);
    return result;
  }

 private:
  bool is_bad(int row, int column) const {
    const BadPixels& bad = settings_.bad_pixels;
    return !bad.bytes.empty() &&
           bad.bytes[pixel_count(bad.width, mosaic_.y_origin + row) +
                     static_cast<std::size_t>(mosaic_.x_origin + column)] != 0;
  }

  /// Whether to count a cell of these flags.
  bool count(std::uint8_t flags) {
    const auto has = [flags](quality::Flag flag) { return (flags & flag) != 0 ? 1u : 0u; };
    counts_.clipped += has(quality::clipped);
    counts_.rescued += has(quality::bad_pixel) != 0 ? 0 : has(quality::rescued);
    counts_.bad += has(quality::bad_pixel);
    const bool is_left_out = quality::is_unusable(flags);
    ++(is_left_out ? counts_.left_out : counts_.cells);
    return !is_left_out;
  }

  void add(const Moments<double>& cell) {
    moments_.s0_s0 += cell.s0_s0;
    moments_.a_a += cell.a_a;
    moments_.b_b += cell.b_b;
    moments_.s0_a += cell.s0_a;
    moments_.s0_b += cell.s0_b;
    moments_.a_b += cell.a_b;
  }

  void find_polarization(bool has_noise, RegionStatistics& result) const {
    result.dolp = result.angle = kNan;
    result.debiased_dolp = result.dolp_sigma = result.angle_sigma = kNan;
    if (!(s0_ > 0)) return;
    const double dolp = std::hypot(a_, b_) / s0_;
    const double angle = std::atan2(result.s2, result.s1) * 90 / std::numbers::pi;
    result.dolp = dolp;
    result.angle = angle <= -90 ? 90 : angle;
    if (!has_noise) return;
    const auto [along, across] = propagate(s0_, a_, b_, moments_);
    result.dolp_sigma = std::sqrt(along);
    result.debiased_dolp =
        dolp > 0 ? dolp + across * std::expm1(-dolp * dolp / across) / (2 * dolp) : 0;
    if (dolp >= 3 * result.dolp_sigma) {
      result.angle_sigma = std::sqrt(across) / (2 * dolp) * 180 / std::numbers::pi;
    }
  }

  const FramePart& frame_;
  const Mosaic& mosaic_;
  const SampleSettings& settings_;
  int clip_level_;
  RegionStatistics counts_;
  double s0_ = 0, a_ = 0, b_ = 0;
  Moments<double> moments_{};
};

void check_frame(const FrameView& frame, const Mosaic& mosaic, const SampleSettings& settings) {
  check_mosaic_frame(frame);
  check(mosaic);
  check(settings, frame, mosaic);
}

/// Of the cell that begins at a pixel of the frame: the polarizers of its upper row.
RegionStatistics statistics_from(const CellSum& sum, const Mosaic& mosaic, int row, int column) {
  const CellAngles angles = cell_angles(mosaic);
  const std::size_t first = row % 2 != 0 ? 2 : 0;
  const std::size_t own = column % 2 != 0 ? 1 : 0;
  return sum.statistics(angles[first + own], angles[first + 1 - own]);
}

}  // namespace

RegionStatistics region_statistics(const FrameView& frame, const Mosaic& mosaic,
                                   const SampleSettings& settings, const Rectangle& region) {
  check_frame(frame, mosaic, settings);
  const auto& [column, row, width, height] = region;
  if (column < 0 || row < 0 || width < 2 || height < 2 || width > frame.width - column ||
      height > frame.height - row) {
    refuse("the region of " + std::to_string(width) + " x " + std::to_string(height) +
           " pixels from column " + std::to_string(column) + ", row " + std::to_string(row) +
           " on is not within the frame's " + std::to_string(frame.width) + " x " +
           std::to_string(frame.height) + ", or holds no 2 x 2 cell");
  }
  Buffer<std::uint16_t> room;
  const FramePart part = packed(frame, {}, room);
  CellSum sum(part, mosaic, settings);
  for (int y = row; y + 1 < row + height; y += 2) {
    for (int x = column; x + 1 < column + width; x += 2) sum.add(y, x);
  }
  return statistics_from(sum, mosaic, row, column);
}

RegionStatistics region_statistics(const FrameView& frame, const Mosaic& mosaic,
                                   const SampleSettings& settings,
                                   std::span<const std::uint8_t> mask) {
  check_frame(frame, mosaic, settings);
  if (mask.size() != pixel_count(frame.width, frame.height)) {
    refuse("the mask has " + std::to_string(mask.size()) + " bytes; it must have one for each of " +
           std::to_string(pixel_count(frame.width, frame.height)) + " pixels");
  }
  Buffer<std::uint16_t> room;
  const FramePart part = packed(frame, {}, room);
  CellSum sum(part, mosaic, settings);
  for (int y = 0; y + 1 < frame.height; y += 2) {
    const std::uint8_t* upper = mask.data() + pixel_count(frame.width, y);
    const std::uint8_t* lower = upper + frame.width;
    for (int x = 0; x + 1 < frame.width; x += 2) {
      if (upper[x] != 0 && upper[x + 1] != 0 && lower[x] != 0 && lower[x + 1] != 0) sum.add(y, x);
    }
  }
  return statistics_from(sum, mosaic, 0, 0);
}

}  // namespace kv::polarization
