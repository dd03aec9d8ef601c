// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <memory>
#include <span>
#include <vector>

#include "kv/calibration/calibration_fit.h"

namespace kv::polarization {

struct PlannedStack;

/// What the parts of one fit share, so that their sums can be merged: the settings, what each frame
/// of the stack is, which half of the cross-validation it counts in, and what the first frames tell
/// of the sensor. A few kilobytes, which never change; copies share them.
///
/// One process makes the plan and hands it out. Every process makes a part, a CalibrationFit of the
/// plan, gives it any of the frames, and hands the part back; one of them merges and finishes:
///
///     const FitPlan plan(settings, stack, read);
///     ...                                                  // in each process, as plan.to_bytes()
///     CalibrationFit part(plan);
///     for (const std::size_t number : mine) part.add_planned(read(number), number);
///     ...                                                  // in one process, as part.write()
///     CalibrationFit fit(plan);
///     for (CalibrationFit& part : parts) fit.merge(std::move(part));
///     const Calibration calibration = fit.finish(read);
///
/// The calibration is that of one fit that gets all frames in their order, but for the rounding of
/// the sums. Records, refusals and verdicts are the same; black levels, gains, diattenuations and
/// errors of good pixels agree to 1e-6 of their value, orientations to 1e-5 degrees. A part that
/// gets all frames in their order has the very bits of a fit without a plan. One thing differs:
/// frames that turn out to be of another size or bit depth count when the halves of the
/// cross-validation are dealt out, unless they are before the first polarized frame of the right
/// ones.
///
/// Threads: any number of them may use a plan.
class FitPlan {
 public:
  /// Of the whole stack. `read` gives the first frame, the first polarized one and the first dark
  /// one, by their places in `stack`; further ones where these are of another size or bit depth
  /// than the first frame. settings.threads counts for that alone.
  ///
  /// Throws Fault of kind argument for settings out of their range, for a stack without frames, for
  /// a frame that CalibrationFit::add would not take, and for an angle that is no number.
  FitPlan(const FitSettings& settings, const std::vector<StackFrame>& stack,
          const FrameAgain& read);
  // Moving copies, so that there is no empty plan.
  FitPlan(const FitPlan&) = default;
  FitPlan& operator=(const FitPlan&) = default;

  /// Number of frames in the stack.
  std::size_t frames() const noexcept;

  /// The plan for another process, on this machine or another one of the same byte order.
  std::vector<std::byte> to_bytes() const;

  /// Throws Fault of kind argument for bytes that are not those of a plan, complete and unchanged
  /// in length, of this version and byte order, with values that a plan can have.
  static FitPlan from_bytes(std::span<const std::byte> bytes);

  /// Whether parts of both can be merged: the same settings, stack and first frames.
  bool operator==(const FitPlan& other) const noexcept;

 private:
  friend class CalibrationFit;
  explicit FitPlan(std::shared_ptr<const PlannedStack> plan);

  std::shared_ptr<const PlannedStack> plan_;
};

}  // namespace kv::polarization
