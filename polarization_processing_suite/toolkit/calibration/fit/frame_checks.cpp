#include <algorithm>
#include <cmath>
#include <cstdio>
#include <string>

#include "toolkit/calibration/fit/robust.h"
#include "toolkit/calibration/fit/stack.h"

namespace kv::polarization {
namespace {

// How far from the others a frame may be: so many robust deviations, or so far in any case.
constexpr double kDeviations = 6;
constexpr double kAngle = 0.2;  // degrees
constexpr double kDolp = 0.005;
constexpr double kTileShare = 0.002;  // of the level
constexpr double kTileFactor = 4;     // times the median of the others

constexpr double kMostHot =
    0.05;  // share of the pixels that may be at the clip level in all frames

constexpr double kDarkShare = 0.01;  // of the range: less light is none
constexpr double kLevelShare = 0.2;  // of the median of the polarized frames

/// Fewer frames do not tell which of them is wrong.
constexpr std::size_t kLeastFrames = 6;

std::string text(const char* format, double a, double b = 0) {
  char line[160];
  std::snprintf(line, sizeof line, format, a, b);
  return line;
}

void refuse_frame(StackEntry& entry, const std::string& why) {
  entry.record.used = false;
  entry.record.refusal = why;
}

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
    refuse_frame(entry, text("clipped: %.3g per cent of its pixels are at the clip level, %.3g per "
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
    refuse_frame(stack[i],
                 text("not dark: its mean is %.4g counts above that of the darkest frame", above));
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
    refuse_frame(entry, text("too dark: its mean is %.4g counts above black; it must be %.4g or "
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
    const std::vector<double> deviations = tile_deviations(stack, limits.black);
    std::vector<double> sorted = deviations;
    const double limit = std::max(kTileShare, kTileFactor * median_of(sorted));
    Worst worst;
    for (std::size_t i = 0; i < indices.size(); ++i) look_at(worst, i, deviations[i], limit);
    if (worst.excess <= 1) return;
    refuse_frame(stack[indices[worst.place]],
                 text("not uniform: its light is spread over the frame otherwise than that of the "
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

bool check_angles(Stack& stack, const ClassValues& black) {
  // One after the other, as a wrong frame makes others look wrong.
  for (bool refused = false;; refused = true) {
    const std::vector<std::size_t> indices = used_frames(stack, FrameKind::polarized);
    const std::vector<ClassLight> lights = class_lights(stack, black);
    if (indices.size() < kLeastFrames || spread_of_angles(lights) < 0.01) return refused;
    const ClassResponses responses = fit_classes(lights);
    std::vector<double> angles;
    std::vector<double> dolps;
    for (const ClassLight& light : lights) {
      const SeenLight seen = seen_light(responses, light.means);
      angles.push_back(half_turn(seen.angle - light.angle));
      dolps.push_back(seen.dolp);
    }
    const RobustSpread angle = robust_spread(angles);
    const RobustSpread dolp = robust_spread(dolps);
    Worst by_angle;
    Worst by_dolp;
    for (std::size_t i = 0; i < indices.size(); ++i) {
      look_at(by_angle, i, std::abs(angles[i] - angle.median),
              std::max(kAngle, kDeviations * angle.deviation));
      look_at(by_dolp, i, std::abs(dolps[i] - dolp.median),
              std::max(kDolp, kDeviations * dolp.deviation));
    }
    if (by_angle.excess <= 1 && by_dolp.excess <= 1) return refused;
    // Light that is hardly polarized has no angle.
    if (by_dolp.excess <= 1) {
      const std::size_t i = by_angle.place;
      refuse_frame(stack[indices[i]],
                   text("moved: its light is %.2f degrees off its angle, by the other frames",
                        angles[i] - angle.median));
    } else {
      const std::size_t i = by_dolp.place;
      refuse_frame(stack[indices[i]],
                   text("its light is polarized otherwise than that of the other frames: the "
                        "degree of polarization is %.3f of theirs",
                        dolps[i] / dolp.median));
    }
  }
}

}  // namespace kv::polarization
