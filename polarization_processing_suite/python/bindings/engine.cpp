#include "python/bindings/engine.h"

#include <algorithm>
#include <cmath>

namespace kv::polarization::python {
namespace {

/// Six standard deviations of the noise in the dark, in counts of a corrected frame, as far as its
/// depth can grow.
std::uint16_t pedestal_of(const Calibration& calibration) {
  const double gain = std::ldexp(1.0, kCorrectedBitDepth - calibration.bit_depth);
  const double dark = gain * std::sqrt(calibration.noise.dark_variance());
  return static_cast<std::uint16_t>(std::min(std::ceil(6 * dark), 32767.0));
}

}  // namespace

Correction::Correction(const Sensor& sensor, BelowBlack below_black, int threads)
    : sensor_(sensor) {
  settings_.rescue = sensor.maps.samples.rescue;
  settings_.threads = threads;
  if (sensor.calibration && below_black == BelowBlack::kept) {
    settings_.pedestal = pedestal_of(*sensor.calibration);
  }
}

KnownFrame Correction::of(const FrameView& raw) {
  if (!sensor_.calibration) return {raw, sensor_.mosaic, sensor_.maps.samples};
  if (!corrector_ || corrected_.width != raw.width || corrected_.height != raw.height) {
    corrector_.emplace(*sensor_.calibration, sensor_.mosaic, raw.width, raw.height, settings_);
  }
  const std::size_t pixels = pixel_count(raw.width, raw.height);
  flags_.resize(pixels);
  bad_.resize(pixels);
  corrector_->correct(raw, corrected_, flags_);
  std::ranges::transform(flags_, bad_.begin(), [](std::uint8_t flags) {
    return static_cast<std::uint8_t>(flags & quality::bad_pixel);
  });
  SampleSettings samples = corrector_->sample_settings();
  samples.bad_pixels = {bad_, raw.width, raw.height};
  // The bad pixels are the frame's own, so that its first pixel is their first one.
  const Mosaic at_its_own_origin{.phase = phase_at(cell_angles(sensor_.mosaic)[0]).value()};
  return {corrected_, at_its_own_origin, samples, flags_};
}

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

void Engine::fill_maps(const FrameView& frame, const MapViews& maps) {
  const KnownFrame known = map_correction_.of(frame);
  if (!map_maker_) map_maker_.emplace(threads_);
  map_maker_->fill(known.frame, known.mosaic, {known.samples, sensor_.maps.compensation}, maps);
  if (maps.quality.empty()) return;
  for (std::size_t pixel = 0; pixel < known.flags.size(); ++pixel) {
    maps.quality[pixel] = static_cast<std::uint8_t>(maps.quality[pixel] | known.flags[pixel]);
  }
}

RegionStatistics Engine::region(const FrameView& frame, const Rectangle& region) {
  const KnownFrame known = map_correction_.of(frame);
  return region_statistics(known.frame, known.mosaic, known.samples, region);
}

RegionStatistics Engine::region(const FrameView& frame, std::span<const std::uint8_t> mask) {
  const KnownFrame known = map_correction_.of(frame);
  return region_statistics(known.frame, known.mosaic, known.samples, mask);
}

}  // namespace kv::polarization::python
