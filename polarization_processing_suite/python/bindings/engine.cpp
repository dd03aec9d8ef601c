// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "python/bindings/engine.h"

#include <cmath>

namespace kv::polarization::python {

Engine::Engine(const Sensor& sensor, int threads)
    : sensor_(sensor), threads_(threads), processor_(threads) {
  if (sensor.weights) processor_.set_weights(*sensor.weights);
  if (!sensor.calibration) return;
  const Calibration& calibration = *sensor.calibration;
  const bool rescue = sensor.maps.samples.rescue;
  using enum CalibratedFrames::BelowBlack;
  for_planes_.emplace(calibration, sensor.mosaic, zero, rescue, threads);
  for_maps_.emplace(calibration, sensor.mosaic, kept, rescue, threads);
}

KnownFrame Engine::known(const FrameView& raw, std::optional<CalibratedFrames>& frames) const {
  return frames ? frames->of(raw) : KnownFrame{raw, sensor_.mosaic, sensor_.maps.samples};
}

void Engine::transform(const FrameView& frame, const PlaneViews& planes) {
  const KnownFrame known = this->known(frame, for_planes_);
  processor_.transform(known.frame, known.mosaic, planes, sensor_.reach);
}

PictureMaps Engine::picture_maps(const FrameView& frame, OutputSet wanted) {
  const KnownFrame known = this->known(frame, for_planes_);
  picture_source_.fill(processor_, known.frame, known.mosaic, wanted, sensor_.reach);
  return picture_source_.maps();
}

void Engine::fill_maps(const FrameView& frame, const MapViews& maps) {
  const KnownFrame known = this->known(frame, for_maps_);
  MapSettings settings{known.samples, sensor_.maps.compensation};
  if (settings.compensation) {
    float& least_mean = settings.compensation->least_mean;
    least_mean = std::ldexp(least_mean, known.gained_bits);
  }
  if (!map_maker_) map_maker_.emplace(threads_);
  map_maker_->fill(known.frame, known.mosaic, settings, maps);
  known.finish(maps);
}

RegionStatistics Engine::region(const FrameView& frame, const Region& region) {
  const KnownFrame known = this->known(frame, for_maps_);
  return std::visit([&](const auto& shape) { return known.statistics_of(shape); }, region);
}

}  // namespace kv::polarization::python
