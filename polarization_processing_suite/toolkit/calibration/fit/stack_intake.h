// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <memory>
#include <optional>
#include <string>

#include "kv/calibration/calibration_fit.h"
#include "toolkit/calibration/fit/pixel_solution.h"
#include "toolkit/calibration/fit/planned_stack.h"

namespace kv::polarization {

/// Takes frames in one by one: into the sums of the pixels, and into the stack of what is kept.
class StackIntake {
 public:
  /// Of frames as they come.
  explicit StackIntake(const FitSettings& settings) : settings_(settings) {}
  /// Of any of the frames of a plan.
  explicit StackIntake(std::shared_ptr<const PlannedStack> plan);

  void add(const FrameView& frame, const StackFrame& what, WorkerPool& pool);
  void add_planned(const FrameView& frame, std::size_t number, WorkerPool& pool);

  /// Takes what another part of the same plan has, which loses it. Nothing has changed when it
  /// throws.
  void merge(StackIntake& other, WorkerPool& pool);

  /// Throws Fault of kind state while frames of the plan are missing.
  void require_all() const;

  // What part_bytes.h puts together again: a frame as it was kept, which the plan must know, and
  // the sums of all of them, which are 0 at first.
  void restore(std::size_t number, TileMeans means);
  void restore_refused(std::size_t number, const std::string& refusal);
  PixelSums& restore_sums();

  /// Takes the frames out of the sums that are not used.
  void take_out_refused(const FrameAgain& again, WorkerPool& pool);

  const PlannedStack* plan() const { return plan_.get(); }  ///< none for frames as they come
  bool has_sums() const { return sums_.has_value(); }
  Stack& stack() { return stack_; }
  const Stack& stack() const { return stack_; }
  const PixelGrid& grid() const { return grid_; }
  const PixelSums& sums() const { return *sums_; }
  const FitReference& reference() const { return reference_; }
  int clip_level() const { return clip_level_; }
  SensorNoise noise() const { return noise_of(settings_, reference_.bit_depth); }

  ClassValues black() const;  ///< class means of the darks, or the level that was told
  double range() const { return clip_level_ - vector_of(black()).mean(); }

 private:
  void settle(const FitReference& reference);
  void take_in(const FrameView& frame, std::size_t number, StackEntry& entry, WorkerPool& pool);
  void keep(TileMeans means, std::size_t number, StackEntry& entry) const;
  void sum(const FramePart& frame, const StackEntry& entry, double sign, WorkerPool& pool);

  std::shared_ptr<const PlannedStack> plan_;
  FitSettings settings_;
  Buffer<std::uint16_t> room_;
  std::optional<PixelSums> sums_;  // once there is a frame to sum
  PixelGrid grid_{};
  Stack stack_;
  FitReference reference_;
  int clip_level_ = 0;
};

}  // namespace kv::polarization
