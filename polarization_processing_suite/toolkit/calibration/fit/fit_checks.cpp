// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "toolkit/calibration/fit/fit_checks.h"

#include <algorithm>
#include <cmath>
#include <string>

#include "toolkit/api/memory_checks.h"
#include "toolkit/api/request_checks.h"

namespace kv::polarization {
namespace {

/// Of the singular values of the angles: below, errors of the class means grow twentyfold.
constexpr double kLeastSpread = 0.05;

std::size_t distinct_angles(const std::vector<ClassLight>& lights) {
  std::vector<double> distinct;
  for (const ClassLight& light : lights) {
    if (std::none_of(distinct.begin(), distinct.end(), [&](double other) {
          return std::abs(half_turn(light.angle - other)) < kSameAngle;
        })) {
      distinct.push_back(light.angle);
    }
  }
  return distinct.size();
}

/// Empty if no polarized frame was refused.
std::string first_refusal(const Stack& stack) {
  for (const StackEntry& entry : stack) {
    if (entry.record.kind != FrameKind::polarized || entry.record.used) continue;
    return " (" + entry.record.name + " cannot be used: " + entry.record.refusal + ")";
  }
  return "";
}

}  // namespace

void check(const FitSettings& settings) {
  check(settings.mosaic);
  if (!std::isfinite(settings.black_level)) {
    refuse("the black level is no number; it must be one in counts");
  }
  if (!(settings.source_dolp > 0 && settings.source_dolp <= 1)) {
    refuse("the source's degree of polarization is " + std::to_string(settings.source_dolp) +
           "; it must be above 0, up to 1");
  }
  if (!(settings.clipped_share >= 0)) refuse("the share of clipped pixels must be 0 or more");
  if (settings.noise && !(settings.noise->gain > 0 && settings.noise->read_noise >= 0)) {
    refuse("the noise is not that of a sensor; its gain must be above 0, its read noise 0 or more");
  }
}

void check_angles_determine(const Stack& stack, const std::vector<ClassLight>& lights, bool known) {
  const std::size_t distinct = known ? distinct_angles(lights) : lights.size();
  if (distinct < 3) {
    refuse("the polarized frames that can be used have " + std::to_string(distinct) +
           " different angles; it must be 3 or more, modulo 180 degrees" + first_refusal(stack));
  }
  if (!known) return;
  if (spread_of_angles(lights) < kLeastSpread) {
    refuse(
        "the angles of the polarized frames are too close to each other to determine the "
        "sensor; they must be spread over half a turn");
  }
}

void check_known_angle(const Stack& stack) {
  const auto first = std::find_if(stack.begin(), stack.end(), [](const StackEntry& entry) {
    return entry.record.kind == FrameKind::polarized && !entry.means.tiles.empty();
  });
  if (first == stack.end() || first->record.used) return;
  refuse("the first polarized frame, whose angle is the known one, cannot be used: " +
         first->record.refusal);
}

}  // namespace kv::polarization
