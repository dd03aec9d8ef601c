// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <variant>

#include "kv/pictures/picture_maps.h"
#include "kv/polarization/maps.h"
#include "kv/polarization/processor.h"
#include "kv/polarization/region.h"
#include "python/bindings/sensor.h"
#include "toolkit/calibration/known_frame.h"

namespace kv::polarization::python {

/// A rectangle, or a mask of the frame's size.
using Region = std::variant<Rectangle, std::span<const std::uint8_t>>;

/// All that works on frames of a sensor, with its memory. One thread at a time uses an engine.
class Engine {
 public:
  /// The sensor must outlive it.
  Engine(const Sensor& sensor, int threads);

  void transform(const FrameView& frame, const PlaneViews& planes);

  /// What pictures are made of, from the same frame as planes. Lasts until the next call.
  PictureMaps picture_maps(const FrameView& frame, OutputSet wanted);

  void fill_maps(const FrameView& frame, const MapViews& maps);
  RegionStatistics region(const FrameView& frame, const Region& region);

 private:
  KnownFrame known(const FrameView& raw, std::optional<CalibratedFrames>& frames) const;

  const Sensor& sensor_;
  int threads_;
  Processor processor_;
  std::optional<MapMaker> map_maker_;
  PictureSource picture_source_;
  std::optional<CalibratedFrames> for_planes_;  // none without a calibration, as for maps
  std::optional<CalibratedFrames> for_maps_;
};

}  // namespace kv::polarization::python
