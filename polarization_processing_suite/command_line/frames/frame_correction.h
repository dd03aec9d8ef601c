#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "command_line/frames/frame_options.h"
#include "kv/calibration/frame_corrector.h"

namespace kv::polarization {

/// A frame with all that is known of its samples.
struct KnownFrame {
  const Frame& frame;
  Mosaic mosaic;                          ///< as if the frame's first pixel were the sensor's
  SampleSettings samples;                 ///< bad pixels included
  std::span<const std::uint8_t> flags{};  ///< of the correction, a byte a pixel; empty without one
  int gained_bits = 0;                    ///< a raw count is 2^gained_bits counts of the frame
};

/// The calibration that the settings name, if they do. Throws as load_calibration does.
std::optional<Calibration> calibration_of(const FrameSettings& settings);

/// Takes off frames what a calibration found of their sensor, if there is one.
class FrameCorrection {
 public:
  /// What becomes of samples below the black level: negative ones, kept by a pedestal, leave means
  /// free of bias; maps and pictures that know no black level want 0 instead.
  enum class BelowBlack : std::uint8_t { kept, zero };

  /// A frame is corrected on that many threads. The calibration may be none; settings and
  /// calibration must outlive the correction.
  FrameCorrection(const FrameSettings& settings, const std::optional<Calibration>& calibration,
                  BelowBlack below_black, int threads);

  /// What it returns lasts until the next call, and no longer than the frame. Throws as
  /// FrameCorrector does.
  KnownFrame of(const Frame& raw);

 private:
  KnownFrame corrected(const Frame& raw, const Mosaic& mosaic);

  const FrameSettings& settings_;
  const std::optional<Calibration>& calibration_;
  CorrectionSettings correction_;
  std::optional<FrameCorrector> corrector_;  // for frames of the size of corrected_
  Frame corrected_;
  Buffer<std::uint8_t> flags_;
  Buffer<std::uint8_t> bad_;
};

}  // namespace kv::polarization
