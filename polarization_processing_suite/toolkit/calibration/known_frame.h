// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "kv/calibration/frame_corrector.h"
#include "kv/polarization/maps.h"
#include "kv/polarization/region.h"

namespace kv::polarization {

/// A frame as it is to be measured.
struct KnownFrame {
  FrameView frame;  ///< in rows of 16-bit samples without gaps, where it was corrected
  Mosaic mosaic;
  SampleSettings samples;                 ///< bad pixels included
  std::span<const std::uint8_t> flags{};  ///< of the correction, a byte a pixel; empty without one
  int gained_bits = 0;                    ///< a raw count is 2^gained_bits counts of the frame

  /// In raw counts. The correction's flags tell which cells were clipped or rescued: their samples
  /// no longer do.
  RegionStatistics statistics_of(const Rectangle& region) const;
  RegionStatistics statistics_of(std::span<const std::uint8_t> mask) const;

  /// Takes what MapMaker made of the frame into raw counts, and the correction's flags into the
  /// quality.
  void finish(const MapViews& maps) const;
};

/// Takes off frames what a calibration found of their sensor. One thread at a time.
class CalibratedFrames {
 public:
  /// What becomes of samples below the black level: negative ones, kept by a pedestal of six
  /// standard deviations of the dark noise, leave means free of bias; planes and pictures, which
  /// know no black level, want 0 instead.
  enum class BelowBlack : std::uint8_t { kept, zero };

  /// A frame is corrected on that many threads. The calibration must outlive it.
  CalibratedFrames(const Calibration& calibration, const Mosaic& mosaic, BelowBlack below_black,
                   bool rescue, int threads);

  /// What it returns lasts until the next call; its mosaic is told as if the frame's first pixel
  /// were the sensor's, as bad pixels are those of the frame. Throws as FrameCorrector does.
  KnownFrame of(const FrameView& raw);

 private:
  const Calibration& calibration_;
  Mosaic mosaic_;
  CorrectionSettings settings_;
  std::optional<FrameCorrector> corrector_;  // for frames of the size of corrected_
  Frame corrected_;
  Buffer<std::uint8_t> flags_;
  Buffer<std::uint8_t> bad_;
};

}  // namespace kv::polarization
