// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "kv/pictures/ranges.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>

#include "toolkit/pictures/map_checks.h"

namespace kv::polarization {
namespace {

/// Ranges end at multiples of 1/20.
constexpr int kSteps = 20;

/// How far above the end of a step a value may be, in levels of 1/65535: the end itself may have
/// been rounded up to a level.
constexpr float kTolerance = 0.5f;
constexpr auto kRoundingUp = static_cast<std::uint32_t>(65534 - kTolerance * kSteps);

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
  for (const std::uint32_t level : maps.dolp) ++counts[(level * kSteps + kRoundingUp) / 65535];
  return end_of_range(counts);
}

double ratio_limit_of(const PictureMaps& maps) {
  check_map(maps, maps.normalized_stokes, "normalized_stokes", 2);
  // Counts of their own for S1/S0 and S2/S0 need not wait for each other.
  std::array<StepCounts, 2> counts{};
  for (std::size_t i = 0; i < maps.normalized_stokes.size(); ++i) {
    // Truncation leads to the step; a NaN leads nowhere.
    const float step = (std::abs(maps.normalized_stokes[i]) - kTolerance / 65535) * kSteps + 1;
    if (step < kSteps) {
      ++counts[i % 2][static_cast<std::size_t>(static_cast<int>(step))];
    } else if (step >= kSteps) {
      ++counts[i % 2][kSteps];
    }
  }
  std::transform(counts[0].begin(), counts[0].end(), counts[1].begin(), counts[0].begin(),
                 std::plus<>());
  return end_of_range(counts[0]);
}

PictureRanges ranges_of(const PictureMaps& maps) {
  PictureRanges ranges;
  if (!maps.dolp.empty()) ranges.dolp_white = dolp_white_of(maps);
  if (!maps.normalized_stokes.empty()) ranges.ratio_limit = ratio_limit_of(maps);
  return ranges;
}

}  // namespace kv::polarization
