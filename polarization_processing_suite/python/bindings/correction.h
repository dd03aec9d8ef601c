#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "kv/calibration/frame_corrector.h"
#include "kv/polarization/maps.h"
#include "kv/polarization/region.h"
#include "python/bindings/sensor.h"

namespace kv::polarization::python {

/// A frame as it is to be measured.
struct KnownFrame {
  FrameView frame;
  Mosaic mosaic;
  SampleSettings samples;
  std::span<const std::uint8_t> flags{};  ///< of its correction; empty without one
  int gained_bits = 0;                    ///< a raw count is 2^gained_bits counts of the frame

  /// In raw counts. The correction's flags decide which cells were clipped or rescued: the samples
  /// no longer tell.
  RegionStatistics statistics_of(const Rectangle& region) const;
  RegionStatistics statistics_of(std::span<const std::uint8_t> mask) const;

  /// What MapMaker made of the frame in raw counts, with the correction's flags.
  void finish(const MapViews& maps) const;
};

/// Frames of one size, corrected by the sensor's calibration. One thread at a time.
class Correction {
 public:
  /// Whether samples below black are kept by a pedestal, for means without bias, or become 0, for
  /// planes, which know no black level.
  enum class BelowBlack : std::uint8_t { kept, zero };

  Correction(const Sensor& sensor, BelowBlack below_black, int threads);

  /// As it is where the sensor has no calibration. Lasts until the next call.
  KnownFrame of(const FrameView& raw);

 private:
  const Sensor& sensor_;
  CorrectionSettings settings_;
  std::optional<FrameCorrector> corrector_;  // for frames of the size of corrected_
  Frame corrected_;
  Buffer<std::uint8_t> flags_;
  Buffer<std::uint8_t> bad_;
};

}  // namespace kv::polarization::python
