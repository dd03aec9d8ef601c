#pragma once

#include <optional>

#include "kv/calibration/calibration_fit.h"
#include "toolkit/calibration/fit/pixel_solution.h"

namespace kv::polarization {

/// Takes frames in one by one: into the sums of the pixels, and into the stack of what is kept.
class StackIntake {
 public:
  explicit StackIntake(const FitSettings& settings)
      : settings_(settings), black_guess_(settings.black_level) {}

  void add(const FrameView& frame, const StackFrame& what, WorkerPool& pool);

  /// Takes the frames out of the sums that are not used.
  void take_out_refused(const FrameAgain& again, WorkerPool& pool);

  Stack& stack() { return stack_; }
  const PixelGrid& grid() const { return grid_; }
  const PixelSums& sums() const { return *sums_; }
  int bit_depth() const { return bit_depth_; }
  int clip_level() const { return clip_level_; }
  const SensorNoise& noise() const { return noise_; }  ///< as told, or assumed
  double scale() const { return scale_; }              ///< of the regressors, counts
  const ClassValues& dark_reference() const { return *dark_reference_; }

  ClassValues black() const;  ///< class means of the darks, or the level that was told
  double range() const { return clip_level_ - vector_of(black()).mean(); }

 private:
  void begin(const FrameView& frame);
  void sum(const FramePart& frame, const StackEntry& entry, double sign, WorkerPool& pool);
  FrameTerms terms_of(const TileMeans& means);
  std::size_t next_half(double angle) const;

  FitSettings settings_;
  Buffer<std::uint16_t> room_;
  std::optional<PixelSums> sums_;
  PixelGrid grid_{};
  Stack stack_;
  int bit_depth_ = 0;
  int clip_level_ = 0;
  SensorNoise noise_{};
  double black_guess_;  // counts, for the weights
  double scale_ = 0;
  std::size_t polarized_ = 0;
  std::optional<ClassValues> dark_reference_;
};

}  // namespace kv::polarization
