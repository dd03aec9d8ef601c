#include "python/bindings/engine.h"

#include <cmath>

namespace kv::polarization::python {

Engine::Engine(const Sensor& sensor, int threads)
    : sensor_(sensor),
      threads_(threads),
      processor_(threads),
      plane_correction_(sensor, Correction::BelowBlack::zero, threads),
      map_correction_(sensor, Correction::BelowBlack::kept, threads) {
  if (sensor.weights) processor_.set_weights(*sensor.weights);
}

void Engine::transform(const FrameView& frame, const PlaneViews& planes) {
  const KnownFrame known = plane_correction_.of(frame);
  processor_.transform(known.frame, known.mosaic, planes, sensor_.reach);
}

PictureMaps Engine::picture_maps(const FrameView& frame, OutputSet wanted) {
  const KnownFrame known = plane_correction_.of(frame);
  picture_source_.fill(processor_, known.frame, known.mosaic, wanted, sensor_.reach);
  return picture_source_.maps();
}

void Engine::fill_maps(const FrameView& frame, const MapViews& maps) {
  const KnownFrame known = map_correction_.of(frame);
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
  const KnownFrame known = map_correction_.of(frame);
  return std::visit([&](const auto& shape) { return known.statistics_of(shape); }, region);
}

}  // namespace kv::polarization::python
