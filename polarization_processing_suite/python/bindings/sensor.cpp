// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "python/bindings/sensor.h"

#include <string>
#include <utility>

#include "toolkit/api/memory_checks.h"

namespace kv::polarization::python {
namespace {

/// The correction solves the cells of the bad pixels of its calibration, so that it has to know
/// them all.
std::shared_ptr<const Calibration> with_bad_pixels(const Calibration& calibration,
                                                   const ByteMask& bad_pixels) {
  const Mosaic& mosaic = calibration.mosaic;
  if (calibration.width > bad_pixels.width - mosaic.x_origin ||
      calibration.height > bad_pixels.height - mosaic.y_origin) {
    refuse("bad_pixels of " + std::to_string(bad_pixels.width) + " x " +
           std::to_string(bad_pixels.height) + " pixels does not cover the calibrated " +
           std::to_string(calibration.width) + " x " + std::to_string(calibration.height) +
           " from column " + std::to_string(mosaic.x_origin) + ", row " +
           std::to_string(mosaic.y_origin) + " on; it must be of the whole sensor");
  }
  auto joined = std::make_shared<Calibration>(calibration);
  std::uint8_t* bad = joined->maps.bad.data();
  for (int y = 0; y < calibration.height; ++y) {
    const std::uint8_t* row = bad_pixels.bytes.data() +
                              pixel_count(bad_pixels.width, mosaic.y_origin + y) + mosaic.x_origin;
    for (int x = 0; x < calibration.width; ++x, ++bad) {
      if (row[x] != 0) *bad = static_cast<std::uint8_t>(*bad | bad_pixel::out_of_range);
    }
  }
  return joined;
}

}  // namespace

void set_bad_pixels(Sensor& sensor, ByteMask bad_pixels) {
  if (sensor.calibration) {
    sensor.calibration = with_bad_pixels(*sensor.calibration, bad_pixels);
    return;
  }
  sensor.bad_pixels = std::move(bad_pixels);
  sensor.maps.samples.bad_pixels = {sensor.bad_pixels.bytes, sensor.bad_pixels.width,
                                    sensor.bad_pixels.height};
}

void check(const Sensor& sensor) {
  if (!sensor.calibration) return;
  const Calibration& calibration = *sensor.calibration;
  const int own_phase = cell_angles(calibration.mosaic.phase)[0];
  const int phase = cell_angles(sensor.mosaic.phase)[0];
  if (phase != own_phase) {
    refuse("the phase is " + std::to_string(phase) + ", that of the calibration " +
           std::to_string(own_phase) + "; leave it out, or take the calibration of this sensor");
  }
  const int bit_depth = sensor.layout.bit_depth.value_or(calibration.bit_depth);
  if (bit_depth != calibration.bit_depth) {
    refuse("the bit depth is " + std::to_string(bit_depth) + ", that of the calibration " +
           std::to_string(calibration.bit_depth) +
           "; leave it out, or take a calibration of such frames");
  }
  const SampleSettings& samples = sensor.maps.samples;
  if (samples.black_level != 0 || samples.clip_level || samples.noise) {
    refuse("black level, clip level and noise are the calibration's; leave them out beside one");
  }
}

}  // namespace kv::polarization::python
