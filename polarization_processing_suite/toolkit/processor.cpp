#include "toolkit/processor.h"

#include <string>

#include "toolkit/error.h"
#include "toolkit/library_call.h"
#include "toolkit/normalized_stokes.h"

namespace kv {
namespace {

void check_frame(const Frame& frame) {
  const std::string size =
      "a frame of " + std::to_string(frame.width) + " x " + std::to_string(frame.height);
  if (frame.width < 2 || frame.height < 2) {
    throw Error(size + " pixels holds no 2 x 2 cell; width and height must be 2 or more");
  }
  // The library would run past its buffers and never return.
  if (frame.width < 4 && frame.height > 2) {
    throw Error(size + " pixels is too narrow; with a height above 2 the width must be 4 or more");
  }
  const std::size_t pixels = pixel_count(frame.width, frame.height);
  if (frame.samples.size() != pixels) {
    throw Error(size + " pixels needs " + std::to_string(pixels) + " samples, but has " +
                std::to_string(frame.samples.size()));
  }
  if (frame.bit_depth < 1 || frame.bit_depth > 16) {
    throw Error("a bit depth of " + std::to_string(frame.bit_depth) +
                " is out of range; it must be from 1 to 16");
  }
}

void check_settings(const TransformSettings& settings) {
  if (settings.planes.empty()) throw Error("no plane was asked for; name at least one");
  if (settings.output_max == 0) {
    throw Error("the output maximum is 0; it must be from 1 to 65535");
  }
  if (settings.x_origin < 0 || settings.y_origin < 0) {
    throw Error("the origin is negative; its column and row must be 0 or more");
  }
  if (settings.phase < kv_polar_phase_0 || settings.phase > kv_polar_phase_135) {
    throw Error("the phase is unknown; it must be that of 0, 45, 90 or 135 degrees");
  }
}

}  // namespace

Processor::Processor() {
  kv_polarization_processor_module_initialize();
  try {
    require_ok(kv_polarization_processor_create_polarization_processor(&handle_));
  } catch (...) {
    kv_polarization_processor_module_terminate();
    throw;
  }
}

Processor::~Processor() {
  kv_polarization_processor_destroy_polarization_processor(handle_);
  kv_polarization_processor_module_terminate();
}

void Processor::transform(const Frame& frame, const TransformSettings& settings,
                          Planes& planes) const {
  check_frame(frame);
  check_settings(settings);
  planes.make_room(frame, settings.planes);

  const OutputSet& wanted = settings.planes;
  const bool pairs_apart = wanted.has(Plane::normalized_stokes) && packs_pairs(frame);
  Targets targets;
  for (const PlaneTraits& traits : kPlanes) {
    if (!wanted.has(traits.plane)) continue;
    if (traits.element == PlaneElement::level) {
      targets.levels[index_of(traits.plane)] = planes.levels(traits.plane).data();
    } else if (!pairs_apart) {
      targets.normalized_stokes = planes.normalized_stokes.data();
    }
  }
  if (targets != Targets{}) {
    call_library(handle_, settings,
                 {frame.samples.data(), frame.width, frame.height, frame.bit_depth}, targets);
  }
  if (pairs_apart) fill_normalized_stokes(handle_, frame, settings, planes);
}

}  // namespace kv
