#pragma once

#include <memory>
#include <optional>

#include "kv/calibration/calibration.h"
#include "kv/polarization/buffer.h"
#include "kv/polarization/maps.h"
#include "kv/polarization/mosaic.h"
#include "kv/polarization/weights.h"
#include "python/bindings/arrays.h"

namespace kv::polarization::python {

/// What a processor of Python is told once: how frames come from the sensor, and what they mean.
struct Sensor {
  Mosaic mosaic{};
  SampleLayout layout{};
  std::optional<Weights> weights{};
  WeightReach reach = WeightReach::as_library;
  std::shared_ptr<const Calibration> calibration{};  ///< null for a sensor taken as ideal

  // For maps and regions. With a calibration, its own values take the place of black level, clip
  // level and noise.
  MapSettings maps{};
  Buffer<std::uint8_t> bad_pixels{};  ///< what maps.samples.bad_pixels views
};

}  // namespace kv::polarization::python
