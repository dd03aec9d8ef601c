// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include <algorithm>
#include <vector>

#include "toolkit/calibration/fit/line_text.h"
#include "toolkit/calibration/fit/robust.h"
#include "toolkit/calibration/fit/stack.h"

namespace kv::polarization {
namespace {

/// Tiles are off that far: times the median of the frames, and share of the level.
constexpr double kTileFactor = 4;
constexpr double kTileShare = 0.002;
constexpr std::size_t kLeastTiles = 4;

/// Fewer frames do not tell which of them is wrong.
constexpr std::size_t kLeastFrames = 6;

constexpr double kMostHot =
    0.05;  // share of the pixels that may be at the clip level in all frames
constexpr double kDarkShare = 0.01;  // of the range: less light is none
constexpr double kLevelShare = 0.2;  // of the median of the polarized frames

void check_clipped(Stack& stack, const FrameLimits& limits) {
  double least = 1;
  for (const StackEntry& entry : stack) {
    if (entry.record.used && entry.record.kind != FrameKind::dark) {
      least = std::min(least, entry.means.clipped_share);
    }
  }
  for (StackEntry& entry : stack) {
    if (!entry.record.used || entry.record.kind == FrameKind::dark) continue;
    if (entry.means.clipped_share <= std::min(kMostHot, least) + limits.clipped_share) continue;
    refuse_frame(entry,
                 line_of("clipped: %.3g per cent of its pixels are at the clip level, %.3g per "
                         "cent in the stack's best frame",
                         100 * entry.means.clipped_share, 100 * least));
  }
}

void check_darks(Stack& stack, const FrameLimits& limits) {
  double least = limits.range;
  for (const std::size_t i : used_frames(stack, FrameKind::dark)) {
    least = std::min(least, vector_of(stack[i].means.classes).mean());
  }
  for (const std::size_t i : used_frames(stack, FrameKind::dark)) {
    const double above = vector_of(stack[i].means.classes).mean() - least;
    if (above <= kDarkShare * limits.range) continue;
    refuse_frame(
        stack[i],
        line_of("not dark: its mean is %.4g counts above that of the darkest frame", above));
  }
}

void check_levels(Stack& stack, const FrameLimits& limits) {
  std::vector<double> levels;
  for (const std::size_t i : used_frames(stack, FrameKind::polarized)) {
    levels.push_back(stack[i].record.level);
  }
  const double least_polarized =
      std::max(kLevelShare * median_of(levels), kDarkShare * limits.range);
  for (StackEntry& entry : stack) {
    if (!entry.record.used || entry.record.kind == FrameKind::dark) continue;
    const double least = entry.is(FrameKind::flat) ? kDarkShare * limits.range : least_polarized;
    if (entry.record.level >= least) continue;
    refuse_frame(entry, line_of("too dark: its mean is %.4g counts above black; it must be %.4g or "
                                "more",
                                entry.record.level, least));
  }
}

/// The frame that is farthest beyond what the others allow; none if all are within.
struct Worst {
  std::size_t place = 0;
  double excess = 1;  ///< over the limit
};

void look_at(Worst& worst, std::size_t place, double deviation, double limit) {
  if (deviation > worst.excess * limit) worst = {place, deviation / limit};
}

/// One after the other, as a wrong frame makes others look wrong.
void check_tiles(Stack& stack, const FrameLimits& limits) {
  for (;;) {
    const std::vector<std::size_t> indices = used_frames(stack, FrameKind::polarized);
    if (indices.size() < kLeastFrames) return;
    if (stack[indices[0]].means.tiles.size() < kLeastTiles) return;
    const std::vector<double> deviations = tile_deviations(stack, limits.black);
    std::vector<double> sorted = deviations;
    const double limit = std::max(kTileShare, kTileFactor * median_of(sorted));
    Worst worst;
    for (std::size_t i = 0; i < indices.size(); ++i) look_at(worst, i, deviations[i], limit);
    if (worst.excess <= 1) return;
    refuse_frame(
        stack[indices[worst.place]],
        line_of("not uniform: its light is spread over the frame otherwise than that of the "
                "other frames, by %.2g per cent rms",
                100 * deviations[worst.place]));
  }
}

}  // namespace

void check_frames(Stack& stack, const FrameLimits& limits) {
  for (StackEntry& entry : stack) {
    if (!entry.record.used) continue;
    entry.record.level = (vector_of(entry.means.classes) - vector_of(limits.black)).mean();
  }
  check_darks(stack, limits);
  check_clipped(stack, limits);
  check_levels(stack, limits);
  check_tiles(stack, limits);
}

}  // namespace kv::polarization
