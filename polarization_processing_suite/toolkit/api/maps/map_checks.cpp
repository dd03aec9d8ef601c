// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "toolkit/api/maps/map_checks.h"

#include <cmath>
#include <string>

#include "toolkit/api/memory_checks.h"
#include "toolkit/api/request_checks.h"

namespace kv::polarization {
namespace {

void check(const SensorNoise& noise) {
  if (!(noise.gain > 0) || !std::isfinite(noise.gain)) {
    refuse("a gain of " + std::to_string(noise.gain) +
           " counts per electron cannot be; it must be above 0");
  }
  if (!(noise.read_noise >= 0) || !std::isfinite(noise.read_noise)) {
    refuse("a read noise of " + std::to_string(noise.read_noise) +
           " electrons cannot be; it must be 0 or more");
  }
}

void check(const BadPixels& bad, const FrameView& frame, const Mosaic& mosaic) {
  if (bad.bytes.empty()) return;
  const std::string size = "the map of bad pixels, " + std::to_string(bad.width) + " x " +
                           std::to_string(bad.height) + " pixels,";
  if (bad.width < 0 || bad.height < 0 || bad.bytes.size() < pixel_count(bad.width, bad.height)) {
    refuse(size + " has " + std::to_string(bad.bytes.size()) +
           " bytes; it must have one for each pixel of the sensor");
  }
  // Differences, since sums could be beyond the range of int.
  if (frame.width > bad.width - mosaic.x_origin || frame.height > bad.height - mosaic.y_origin) {
    refuse(size + " does not cover the frame's " + std::to_string(frame.width) + " x " +
           std::to_string(frame.height) + " from column " + std::to_string(mosaic.x_origin) +
           ", row " + std::to_string(mosaic.y_origin) + " on; it must be of the whole sensor");
  }
}

}  // namespace

void check(const SampleSettings& settings, const FrameView& frame, const Mosaic& mosaic) {
  if (!std::isfinite(settings.black_level)) {
    refuse("the black level is no number; it must be one in counts");
  }
  if (settings.noise) check(*settings.noise);
  check(settings.bad_pixels, frame, mosaic);
}

void check_request(const FrameView& frame, const Mosaic& mosaic, const MapSettings& settings,
                   const MapViews& maps) {
  check_mosaic_frame(frame);
  check(mosaic);
  check(settings.samples, frame, mosaic);
  if (settings.compensation && !(settings.compensation->least_mean > 0)) {
    refuse("the least mean of the compensation is " +
           std::to_string(settings.compensation->least_mean) + " counts; it must be above 0");
  }
  const std::size_t pixels = pixel_count(frame.width, frame.height);
  std::vector<NamedMemory> memory = {{"the frame", frame.bytes}};
  for (const MapTraits& traits : kMaps) {
    const std::span<const std::byte> bytes = traits.map == Map::quality
                                                 ? std::as_bytes(maps.quality)
                                                 : std::as_bytes(maps.values(traits.map));
    if (bytes.empty()) continue;
    check_room(traits.name, bytes.size() / (traits.map == Map::quality ? 1 : sizeof(float)),
               pixels);
    if (traits.wants_noise && !settings.samples.noise) {
      refuse("the map " + std::string(traits.name) +
             " is made of the noise of the samples; tell the sensor's gain and read noise");
    }
    memory.push_back({traits.name, bytes});
  }
  if (memory.size() == 1) refuse("no map was asked for; name at least one");
  const std::span<const std::uint8_t> bad = settings.samples.bad_pixels.bytes;
  if (!bad.empty()) memory.push_back({"the map of bad pixels", std::as_bytes(bad)});
  check_overlap(memory);
}

}  // namespace kv::polarization
