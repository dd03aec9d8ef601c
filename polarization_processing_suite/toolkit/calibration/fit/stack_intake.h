#pragma once

#include <optional>

#include "kv/calibration/calibration_fit.h"
#include "toolkit/calibration/fit/fit_reference.h"
#include "toolkit/calibration/fit/pixel_solution.h"

namespace kv::polarization {

/// Takes frames in one by one: into the sums of the pixels, and into the stack of what is kept.
class StackIntake {
 public:
  explicit StackIntake(const FitSettings& settings) : settings_(settings) {}

  void add(const FrameView& frame, const StackFrame& what, WorkerPool& pool);

  /// Takes the frames out of the sums that are not used.
  void take_out_refused(const FrameAgain& again, WorkerPool& pool);

  Stack& stack() { return stack_; }
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

  FitSettings settings_;
  Buffer<std::uint16_t> room_;
  std::optional<PixelSums> sums_;  // once there is a frame to sum
  PixelGrid grid_{};
  Stack stack_;
  FitReference reference_;
  int clip_level_ = 0;
};

}  // namespace kv::polarization
