// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <limits>

#include "kv/calibration/calibration_fit.h"
#include "toolkit/calibration/fit/stack.h"

namespace kv::polarization {

/// What the first frames of a stack tell, and all frames are summed by.
struct FitReference {
  static constexpr std::uint64_t kNone = std::numeric_limits<std::uint64_t>::max();

  int width = 0;
  int height = 0;
  int bit_depth = 0;
  std::uint64_t polarized = kNone;  ///< number of the first polarized frame of that size and depth
  double scale = 0;                 ///< of the regressors, counts, from 1 up; told by that frame
  std::uint64_t dark = kNone;       ///< number of the first dark frame of that size and depth
  ClassValues dark_means{};         ///< its class means, counts

  bool fits(const FrameView& frame) const {
    return frame.width == width && frame.height == height && frame.bit_depth == bit_depth;
  }
  /// Whether frames of that kind can be summed.
  bool knows(FrameKind kind) const;
  /// Of a frame that fits, frames coming in order: the first one of its kind tells.
  void learn(std::size_t number, FrameKind kind, const ClassValues& means);
};

/// Of the first frame. Throws Fault of kind argument when its sides are not even.
FitReference reference_of(const FrameView& first);

int clip_level_of(const FitSettings& settings, int bit_depth);

/// As told, or assumed.
SensorNoise noise_of(const FitSettings& settings, int bit_depth);

/// How the polarized frame of that number counts.
FrameTerms terms_of(const ClassValues& means, std::size_t number, const FitReference& reference,
                    const FitSettings& settings);

/// The next frame of a stack, as it was told and not looked at: its record and its half. Throws
/// Fault of kind argument for an angle that is no number.
StackEntry next_entry(const Stack& before, const StackFrame& what, const FitReference& reference,
                      const FitSettings& settings);

}  // namespace kv::polarization
