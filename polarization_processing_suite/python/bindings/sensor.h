// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <memory>
#include <optional>

#include "kv/calibration/calibration.h"
#include "kv/polarization/maps.h"
#include "kv/polarization/mosaic.h"
#include "kv/polarization/weights.h"
#include "python/bindings/arrays.h"
#include "python/bindings/byte_mask.h"

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
  ByteMask bad_pixels{};  ///< what maps.samples.bad_pixels views
};

/// Names bad pixels of the whole sensor. With a calibration they are joined with its own. Throws
/// Fault of kind argument for a map that does not cover the calibrated region.
void set_bad_pixels(Sensor& sensor, ByteMask bad_pixels);

/// Throws Fault of kind argument where the sensor contradicts its calibration.
void check(const Sensor& sensor);

}  // namespace kv::polarization::python
