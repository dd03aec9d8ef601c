// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include <algorithm>
#include <cmath>
#include <numeric>
#include <vector>

#include "toolkit/calibration/fit/line_text.h"
#include "toolkit/calibration/fit/robust.h"
#include "toolkit/calibration/fit/stack.h"

namespace kv::polarization {
namespace {

// How far from the others a frame may be: so many deviations, or so far in any case.
constexpr double kAngleDeviations = 6;
constexpr double kAngle = 0.2;  // degrees
constexpr double kDolp = 0.005;

/// Fewer frames do not tell which of them is wrong.
constexpr std::size_t kLeastTurned = 8;
constexpr std::size_t kFewFrames = 24;

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
  return std::max(least, kAngleDeviations * (few ? std::sqrt(squares / left) : spread.deviation));
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
    refuse_frame(
        stack[indices[worst_place]],
        worst.dolp_excess <= 1
            ? line_of("moved: its light is %.2f degrees off its angle, by the other frames",
                      worst.angle)
            : line_of("its light is polarized otherwise than that of the other frames: the "
                      "degree of polarization is %.3f of theirs",
                      worst.dolp));
  }
}

}  // namespace kv::polarization
