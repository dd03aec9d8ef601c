#include "kv/pictures/ranges.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "toolkit/pictures/map_checks.h"

namespace kv::polarization {
namespace {

/// Ranges end at multiples of 1/20.
constexpr int kSteps = 20;

/// How far above the end of a step a value may be, in levels of 1/65535: the end itself may have
/// been rounded up to a level.
constexpr float kTolerance = 0.5f;

/// How many values lie above the end of the step before and up to that of step i.
using StepCounts = std::array<std::size_t, kSteps + 1>;

/// The end of the lowest step, from the first up, that at most one value in 100 exceeds.
double end_of_range(const StepCounts& counts) {
  std::size_t total = 0;
  for (const std::size_t count : counts) total += count;
  std::size_t above = 0;
  int step = kSteps;
  for (; step > 1; --step) {
    above += counts[static_cast<std::size_t>(step)];
    if (above > total / 100) break;
  }
  return static_cast<double>(step) / kSteps;
}

}  // namespace

double dolp_white_of(const PictureMaps& maps) {
  check_map(maps, maps.dolp, "dolp");
  StepCounts counts{};
  constexpr auto kRoundingUp = static_cast<std::uint32_t>(65534 - kTolerance * kSteps);
  for (const std::uint32_t level : maps.dolp) ++counts[(level * kSteps + kRoundingUp) / 65535];
  return end_of_range(counts);
}

double ratio_limit_of(const PictureMaps& maps) {
  check_map(maps, maps.normalized_stokes, "normalized_stokes", 2);
  StepCounts counts{};
  for (const float ratio : maps.normalized_stokes) {
    const float steps = (std::abs(ratio) - kTolerance / 65535) * kSteps;
    if (steps >= kSteps) {
      ++counts[kSteps];
    } else if (steps == steps) {
      ++counts[static_cast<std::size_t>(std::max(0.0f, std::ceil(steps)))];
    }
  }
  return end_of_range(counts);
}

PictureRanges ranges_of(const PictureMaps& maps) {
  PictureRanges ranges;
  if (!maps.dolp.empty()) ranges.dolp_white = dolp_white_of(maps);
  if (!maps.normalized_stokes.empty()) ranges.ratio_limit = ratio_limit_of(maps);
  return ranges;
}

}  // namespace kv::polarization
