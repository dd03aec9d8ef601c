// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "toolkit/calibration/known_frame.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace kv::polarization {
namespace {

/// Six standard deviations of the noise in the dark, in counts of a corrected frame, as far as its
/// depth can grow.
std::uint16_t pedestal_of(const Calibration& calibration) {
  const double gain = std::ldexp(1.0, kCorrectedBitDepth - calibration.bit_depth);
  const double dark = gain * std::sqrt(calibration.noise.dark_variance());
  return static_cast<std::uint16_t>(std::min(std::ceil(6 * dark), 32767.0));
}

using Cell = std::array<std::size_t, 4>;  // places of its pixels

/// Cells that share no pixel, from the region's upper left pixel on.
template <class Visit>
void for_each_cell(const FrameView& frame, const Rectangle& region, const Visit& visit) {
  const auto width = static_cast<std::size_t>(frame.width);
  for (int y = region.row; y + 1 < region.row + region.height; y += 2) {
    for (int x = region.column; x + 1 < region.column + region.width; x += 2) {
      const std::size_t upper = pixel_count(frame.width, y) + static_cast<std::size_t>(x);
      visit(Cell{upper, upper + 1, upper + width, upper + width + 1});
    }
  }
}

void count_corrected(std::span<const std::uint8_t> all, const Cell& cell,
                     RegionStatistics& result) {
  const int flags = all[cell[0]] | all[cell[1]] | all[cell[2]] | all[cell[3]];
  if ((flags & quality::clipped) == 0) return;
  ++result.clipped;
  if ((flags & quality::rescued) != 0 && (flags & quality::bad_pixel) == 0) ++result.rescued;
}

void to_raw_counts(int gained_bits, RegionStatistics& result) {
  for (double* value :
       {&result.s0, &result.s1, &result.s2, &result.s0_sigma, &result.s1_sigma, &result.s2_sigma}) {
    *value = std::ldexp(*value, -gained_bits);
  }
}

}  // namespace

RegionStatistics KnownFrame::statistics_of(const Rectangle& region) const {
  RegionStatistics result = region_statistics(frame, mosaic, samples, region);
  if (flags.empty()) return result;
  result.clipped = result.rescued = 0;
  for_each_cell(frame, region, [&](const Cell& cell) { count_corrected(flags, cell, result); });
  to_raw_counts(gained_bits, result);
  return result;
}

RegionStatistics KnownFrame::statistics_of(std::span<const std::uint8_t> mask) const {
  RegionStatistics result = region_statistics(frame, mosaic, samples, mask);
  if (flags.empty()) return result;
  result.clipped = result.rescued = 0;
  for_each_cell(frame, {0, 0, frame.width, frame.height}, [&](const Cell& cell) {
    const auto is_within = [&](std::size_t pixel) { return mask[pixel] != 0; };
    if (std::ranges::all_of(cell, is_within)) count_corrected(flags, cell, result);
  });
  to_raw_counts(gained_bits, result);
  return result;
}

void KnownFrame::finish(const MapViews& maps) const {
  if (flags.empty()) return;
  const float count = std::ldexp(1.0F, -gained_bits);
  for (const std::span<float> map :
       {maps.s0, maps.s1, maps.s2, maps.s0_sigma, maps.s1_sigma, maps.s2_sigma}) {
    for (float& value : map) value *= count;
  }
  for (std::size_t pixel = 0; pixel < maps.quality.size(); ++pixel) {
    maps.quality[pixel] = static_cast<std::uint8_t>(maps.quality[pixel] | flags[pixel]);
  }
}

CalibratedFrames::CalibratedFrames(const Calibration& calibration, const Mosaic& mosaic,
                                   BelowBlack below_black, bool rescue, int threads)
    : calibration_(calibration), mosaic_(mosaic) {
  settings_.rescue = rescue;
  settings_.threads = threads;
  if (below_black == BelowBlack::kept) settings_.pedestal = pedestal_of(calibration);
}

KnownFrame CalibratedFrames::of(const FrameView& raw) {
  if (!corrector_ || corrected_.width != raw.width || corrected_.height != raw.height) {
    corrector_.emplace(calibration_, mosaic_, raw.width, raw.height, settings_);
    corrected_.reshape(static_cast<unsigned>(raw.width), static_cast<unsigned>(raw.height),
                       kCorrectedBitDepth);
  }
  const std::size_t pixels = pixel_count(raw.width, raw.height);
  flags_.resize(pixels);
  bad_.resize(pixels);
  corrector_->correct(raw, corrected_, flags_);
  std::ranges::transform(flags_, bad_.begin(), [](std::uint8_t flags) {
    return static_cast<std::uint8_t>(flags & quality::bad_pixel);
  });
  SampleSettings samples = corrector_->sample_settings();
  samples.bad_pixels = {bad_, raw.width, raw.height};
  const Mosaic at_its_own_origin{.phase = phase_at(cell_angles(mosaic_)[0]).value()};
  return {corrected_, at_its_own_origin, samples, flags_, corrector_->gained_bits()};
}

}  // namespace kv::polarization
