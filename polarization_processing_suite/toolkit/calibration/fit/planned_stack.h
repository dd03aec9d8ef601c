// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <span>
#include <vector>

#include "kv/calibration/fit_plan.h"
#include "toolkit/calibration/fit/fit_reference.h"

namespace kv::polarization {

/// A plan and its bytes, by which plans are compared: angles that nobody knows are no numbers, and
/// those are not equal to themselves.
struct PlannedStack {
  FitSettings settings;
  std::vector<StackFrame> frames;
  FitReference reference;
  std::vector<std::byte> bytes;

  bool operator==(const PlannedStack& other) const { return bytes == other.bytes; }
};

/// Reads the frames that tell the reference.
PlannedStack plan_stack(const FitSettings& settings, const std::vector<StackFrame>& frames,
                        const FrameAgain& read);

/// Throws Fault of kind argument for bytes that are not those of a plan.
PlannedStack planned_stack_of(std::span<const std::byte> bytes);

/// Entries of all its frames, none of them added.
Stack entries_of(const PlannedStack& plan);

}  // namespace kv::polarization
