#include <algorithm>
#include <cmath>
#include <cstdio>
#include <numeric>
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

/// Fewer frames do not tell which of them is wrong: by their tiles, and by their angles.
constexpr std::size_t kLeastFrames = 6;
constexpr std::size_t kLeastTurned = 8;
constexpr std::size_t kFewFrames = 24;
constexpr std::size_t kLeastTiles = 4;

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
    if (stack[indices[0]].means.tiles.size() < kLeastTiles) return;
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

/// How far a frame's light is from what the others tell, over what they allow.
struct AngleCheck {
  double angle = 0;  ///< degrees
  double angle_excess = 0;
  double dolp = 1;  ///< over that of the others
  double dolp_excess = 0;

  double excess() const { return std::max(angle_excess, dolp_excess); }
};

/// Robust for many frames; for few ones, the spread of what a fit with 5 free numbers has left.
double limit_of(const std::vector<double>& values, double least) {
  const RobustSpread spread = robust_spread(values);
  double squares = 0;
  for (const double value : values) squares += (value - spread.median) * (value - spread.median);
  const bool few = values.size() < kFewFrames;
  const double left = static_cast<double>(values.size()) - 5;
  return std::max(least, kDeviations * (few ? std::sqrt(squares / left) : spread.deviation));
}

AngleCheck check_by_others(std::vector<ClassLight> lights, std::size_t place) {
  const ClassLight light = lights[place];
  lights.erase(lights.begin() + static_cast<std::ptrdiff_t>(place));
  const ClassResponses responses = fit_classes(lights);
  std::vector<double> angles;
  std::vector<double> dolps;
  for (const ClassLight& other : lights) {
    const SeenLight seen = seen_light(responses, other.means);
    angles.push_back(half_turn(seen.angle - other.angle));
    dolps.push_back(seen.dolp);
  }
  const SeenLight seen = seen_light(responses, light.means);
  const double dolp = robust_spread(dolps).median;
  AngleCheck check;
  check.angle = half_turn(seen.angle - light.angle - robust_spread(angles).median);
  check.angle_excess = std::abs(check.angle) / limit_of(angles, kAngle);
  check.dolp = seen.dolp / dolp;
  check.dolp_excess = std::abs(seen.dolp - dolp) / limit_of(dolps, kDolp);
  return check;
}

/// The frames to look at: the worst one by the fit of all, or every one of few, where a wrong frame
/// pulls the fit so far that others look wrong.
std::vector<std::size_t> suspects(const std::vector<ClassLight>& lights) {
  std::vector<std::size_t> places(lights.size());
  std::iota(places.begin(), places.end(), std::size_t{0});
  if (lights.size() < kFewFrames) return places;
  const ClassResponses responses = fit_classes(lights);
  const auto misfit = [&](std::size_t place) {
    const SeenLight seen = seen_light(responses, lights[place].means);
    Eigen::Vector3d found = seen.dolp * light_at(seen.angle);
    found[0] = 1;
    return (found - light_at(lights[place].angle)).norm();
  };
  return {*std::max_element(places.begin(), places.end(),
                            [&](std::size_t a, std::size_t b) { return misfit(a) < misfit(b); })};
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
    if (indices.size() < kLeastTurned || spread_of_angles(lights) < 0.01) return refused;
    AngleCheck worst;
    std::size_t worst_place = 0;
    for (const std::size_t place : suspects(lights)) {
      const AngleCheck check = check_by_others(lights, place);
      if (check.excess() <= worst.excess()) continue;
      worst = check;
      worst_place = place;
    }
    if (worst.excess() <= 1) return refused;
    // Light that is hardly polarized has no angle.
    refuse_frame(stack[indices[worst_place]],
                 worst.dolp_excess <= 1
                     ? text("moved: its light is %.2f degrees off its angle, by the other frames",
                            worst.angle)
                     : text("its light is polarized otherwise than that of the other frames: the "
                            "degree of polarization is %.3f of theirs",
                            worst.dolp));
  }
}

}  // namespace kv::polarization
