// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "toolkit/calibration/fit/fit_reference.h"

#include <algorithm>
#include <cmath>

#include "toolkit/api/memory_checks.h"
#include "toolkit/calibration/fit/fit_checks.h"

namespace kv::polarization {
namespace {

// Of a sensor that nobody told about.
constexpr double kFullWell = 10000;  // electrons at full scale
constexpr float kReadNoise = 2.5f;   // electrons

/// In turns; frames of one angle in turns among themselves, so that both halves have all angles.
std::size_t next_half(const Stack& before, double angle, bool angles_known) {
  for (auto entry = before.rbegin(); angles_known && entry != before.rend(); ++entry) {
    if (entry->is(FrameKind::polarized) &&
        std::abs(half_turn(entry->record.angle - angle)) < kSameAngle) {
      return 1 - entry->half;
    }
  }
  return used_frames(before, FrameKind::polarized).size() % 2;
}

}  // namespace

bool FitReference::knows(FrameKind kind) const {
  if (kind == FrameKind::flat) return true;
  return (kind == FrameKind::dark ? dark : polarized) != kNone;
}

void FitReference::learn(std::size_t number, FrameKind kind, const ClassValues& means) {
  if (knows(kind)) return;
  if (kind == FrameKind::dark) {
    dark = number;
    dark_means = means;
  } else {
    polarized = number;
    scale = std::max(1.0, ideal_stokes(vector_of(means))[0]);
  }
}

FitReference reference_of(const FrameView& first) {
  if (first.width % 2 != 0 || first.height % 2 != 0) {
    refuse("the frames have " + std::to_string(first.width) + " x " + std::to_string(first.height) +
           " pixels; width and height must be even");
  }
  FitReference reference;
  reference.width = first.width;
  reference.height = first.height;
  reference.bit_depth = first.bit_depth;
  return reference;
}

int clip_level_of(const FitSettings& settings, int bit_depth) {
  return settings.clip_level.value_or(static_cast<std::uint16_t>(full_scale(bit_depth)));
}

SensorNoise noise_of(const FitSettings& settings, int bit_depth) {
  const auto gain = static_cast<float>(full_scale(bit_depth) / kFullWell);
  return settings.noise.value_or(SensorNoise{gain, kReadNoise});
}

FrameTerms terms_of(const ClassValues& means, std::size_t number, const FitReference& reference,
                    const FitSettings& settings) {
  FrameTerms terms;
  terms.means = means;
  const Eigen::Vector3d stokes = ideal_stokes(vector_of(means));
  const double scale = reference.scale;
  terms.regressors = {1, stokes[0] / scale, stokes[1] / scale, stokes[2] / scale};
  // A frame before the first dark one counts as if there were none, in whatever order they come.
  const double black =
      number > reference.dark ? vector_of(reference.dark_means).mean() : settings.black_level;
  // Only the weights' ratios matter; near 1 they keep the sums small.
  const SensorNoise noise = noise_of(settings, reference.bit_depth);
  const double unit = noise.variance(static_cast<float>(scale / 2));
  for (std::size_t number_of_class = 0; number_of_class < 4; ++number_of_class) {
    terms.weights[number_of_class] =
        unit / noise.variance(static_cast<float>(means[number_of_class] - black));
  }
  return terms;
}

StackEntry next_entry(const Stack& before, const StackFrame& what, const FitReference& reference,
                      const FitSettings& settings) {
  const bool is_polarized = what.kind == FrameKind::polarized;
  const bool has_angle =
      is_polarized && (settings.angles_known || before.size() <= reference.polarized);
  if (has_angle && !std::isfinite(what.angle)) {
    refuse("the polarizer's angle of " + what.name + " is no number; it must be one in degrees");
  }
  StackEntry entry;
  entry.record.name = what.name;
  entry.record.kind = what.kind;
  entry.record.angle = has_angle ? what.angle : 0;
  if (is_polarized) entry.half = next_half(before, entry.record.angle, settings.angles_known);
  return entry;
}

}  // namespace kv::polarization
