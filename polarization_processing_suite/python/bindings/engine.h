#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "kv/calibration/frame_corrector.h"
#include "kv/polarization/maps.h"
#include "kv/polarization/processor.h"
#include "kv/polarization/region.h"
#include "python/bindings/sensor.h"

namespace kv::polarization::python {

/// A frame as it is to be measured.
struct KnownFrame {
  FrameView frame;
  Mosaic mosaic;
  SampleSettings samples;
  std::span<const std::uint8_t> flags{};  ///< of its correction; empty without one
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

/// All that works on frames of a sensor, with its memory. One thread at a time uses an engine.
class Engine {
 public:
  /// The sensor must outlive it.
  Engine(const Sensor& sensor, int threads);

  void transform(const FrameView& frame, const PlaneViews& planes);
  void fill_maps(const FrameView& frame, const MapViews& maps);
  RegionStatistics region(const FrameView& frame, const Rectangle& region);
  RegionStatistics region(const FrameView& frame, std::span<const std::uint8_t> mask);

 private:
  const Sensor& sensor_;
  int threads_;
  Processor processor_;
  std::optional<MapMaker> map_maker_;
  Correction plane_correction_;
  Correction map_correction_;
};

}  // namespace kv::polarization::python
