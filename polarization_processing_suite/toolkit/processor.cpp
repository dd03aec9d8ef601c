#include "toolkit/processor.h"

#include <algorithm>

#include "toolkit/error.h"

namespace kv {
namespace {

constexpr std::array<Plane, 5> kQuantisedPlanes = {Plane::intensity, Plane::stokes_s1,
                                                   Plane::stokes_s2, Plane::azimuth, Plane::dolp};

std::string size_text(const Frame& frame) {
  return std::to_string(frame.width) + " x " + std::to_string(frame.height);
}

void check_frame(const Frame& frame) {
  if (frame.width < 2 || frame.height < 2) {
    throw Error("a frame of " + size_text(frame) +
                " pixels holds no 2 x 2 cell; width and height must be 2 or more");
  }
  // The library runs past its buffers here and never returns.
  if (frame.width < 4 && frame.height > 2) {
    throw Error("a frame of " + size_text(frame) +
                " pixels is too narrow; with a height above 2 the width must be 4 or more");
  }
  if (frame.samples.size() != pixel_count(frame.width, frame.height)) {
    throw Error("a frame of " + size_text(frame) + " pixels needs as many samples, not " +
                std::to_string(frame.samples.size()));
  }
  if (frame.bit_depth < 1 || frame.bit_depth > 16) {
    throw Error("a bit depth of " + std::to_string(frame.bit_depth) +
                " is out of range; samples have from 1 to 16 bits");
  }
}

void check_settings(const TransformSettings& settings) {
  if (settings.planes.empty()) throw Error("no plane is asked for; name one or more");
  if (settings.output_max == 0) throw Error("an output maximum of 0 is none; from 1 to 65535");
  if (settings.x_origin < 0 || settings.y_origin < 0) {
    throw Error("a negative origin lies outside of the sensor; origins are 0 or more");
  }
  if (settings.phase < kv_polar_phase_0 || settings.phase > kv_polar_phase_135) {
    throw Error("the phase is none of 0, 45, 90 and 135 degrees");
  }
}

/// Where a call of the library puts its results; null for a plane that is not wanted.
struct Targets {
  float* normalized_stokes = nullptr;
  std::array<std::uint16_t*, kQuantisedPlanes.size()> quantised{};
};

template <class T>
T* start_of(std::vector<T>& plane) {
  return plane.empty() ? nullptr : plane.data();
}

/// Some rows of the frame, from an even one on, so that the phase is the frame's.
struct Strip {
  const std::uint16_t* samples;
  int width;
  int height;
};

void call_library(PolarizationProcessor* handle, const TransformSettings& settings, int bit_depth,
                  const Strip& strip, const Targets& targets) {
  const auto& [intensity, stokes_s1, stokes_s2, azimuth, dolp] = targets.quantised;
  const ProcessorStatus status = kv_polarization_processor_transform(
      handle, settings.phase, strip.samples, settings.x_origin, settings.y_origin, strip.width,
      strip.height, static_cast<std::uint32_t>(bit_depth), settings.output_max,
      targets.normalized_stokes, intensity, stokes_s1, stokes_s2, azimuth, dolp);
  if (status != kv_status_ok) throw Error(status_message(status));
}

/// A call over several row pairs displaces normalized_stokes. Strips of one row pair and the two
/// rows below it have nothing to displace; those two, an edge to the strip but not to the frame,
/// are overwritten by the next strip. One row would do, but the library takes four times as long
/// for an odd last row as for two rows of mosaic cells.
void fill_normalized_stokes_by_strips(PolarizationProcessor* handle, const Frame& frame,
                                      const TransformSettings& settings, Planes& planes) {
  for (int row = 0, end = 0; end < frame.height; row += 2) {
    const int rows = std::min(4, frame.height - row);
    end = row + rows;
    const std::size_t first = pixel_count(frame.width, row);
    call_library(handle, settings, frame.bit_depth,
                 {frame.samples.data() + first, frame.width, rows},
                 {planes.normalized_stokes.data() + 2 * first, {}});
  }
}

bool displaces_normalized_stokes(const Frame& frame) {
  return frame.height >= 5 && frame.width >= 8;
}

}  // namespace

std::optional<Plane> plane_named(std::string_view name) {
  const auto found = std::find(kPlaneNames.begin(), kPlaneNames.end(), name);
  if (found == kPlaneNames.end()) return std::nullopt;
  return static_cast<Plane>(found - kPlaneNames.begin());
}

PlaneSet PlaneSet::all() {
  PlaneSet set;
  set.bits_.set();
  return set;
}

bool PlaneSet::has_quantised() const {
  return std::any_of(kQuantisedPlanes.begin(), kQuantisedPlanes.end(),
                     [this](Plane plane) { return has(plane); });
}

void Planes::make_room(const Frame& frame, PlaneSet wanted) {
  width = frame.width;
  height = frame.height;
  const std::size_t pixels = frame.samples.size();
  normalized_stokes.resize(wanted.has(Plane::normalized_stokes) ? 2 * pixels : 0);
  for (const Plane plane : kQuantisedPlanes)
    quantised(plane).resize(wanted.has(plane) ? pixels : 0);
}

std::vector<std::uint16_t>& Planes::quantised(Plane plane) {
  switch (plane) {
    case Plane::intensity:
      return intensity;
    case Plane::stokes_s1:
      return stokes_s1;
    case Plane::stokes_s2:
      return stokes_s2;
    case Plane::azimuth:
      return azimuth;
    case Plane::dolp:
      return dolp;
    case Plane::normalized_stokes:
      break;
  }
  throw std::logic_error("normalized_stokes is no 16-bit plane");
}

const std::vector<std::uint16_t>& Planes::quantised(Plane plane) const {
  return const_cast<Planes*>(this)->quantised(plane);
}

std::string status_message(ProcessorStatus status) {
  switch (status) {
    case kv_status_ok:
      return "no fault";
    case kv_status_general_failure:
      return "the processing library can't work on this processor; it needs SSE2";
    case kv_status_not_initialized:
      return "the processing library is not initialised";
    case kv_status_out_of_memory:
      return "the processing library is out of memory";
    case kv_status_null_handle:
      return "there is no processor handle";
    case kv_status_null_input:
      return "there is no input frame";
    case kv_status_no_outputs:
      return "no output plane is asked for";
    case kv_status_input_aliases_output:
      return "an output plane is the input frame itself";
    case kv_status_outputs_alias:
      return "two output planes are one buffer";
    case kv_status_invalid_polar_phase:
      return "the polar phase is none of 0, 45, 90 and 135 degrees";
    case kv_status_zero_output_max:
      return "the output maximum is 0; from 1 to 65535 would be right";
    case kv_status_invalid_width:
      return "the width is below 2";
    case kv_status_invalid_height:
      return "the height is below 2";
    case kv_status_invalid_bit_depth:
      return "the bit depth is above 16";
    default:
      return "the processing library returned the unknown status " + std::to_string(status);
  }
}

std::optional<PolarPhase> phase_at(int degrees) {
  switch (degrees) {
    case 0:
      return kv_polar_phase_0;
    case 45:
      return kv_polar_phase_45;
    case 90:
      return kv_polar_phase_90;
    case 135:
      return kv_polar_phase_135;
    default:
      return std::nullopt;
  }
}

Processor::Processor() {
  kv_polarization_processor_module_initialize();
  const ProcessorStatus status = kv_polarization_processor_create_polarization_processor(&handle_);
  if (status != kv_status_ok) {
    kv_polarization_processor_module_terminate();
    throw Error(status_message(status));
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

  Targets targets;
  for (std::size_t i = 0; i < kQuantisedPlanes.size(); ++i) {
    targets.quantised[i] = start_of(planes.quantised(kQuantisedPlanes[i]));
  }
  const bool by_strips =
      settings.planes.has(Plane::normalized_stokes) && displaces_normalized_stokes(frame);
  if (!by_strips) targets.normalized_stokes = start_of(planes.normalized_stokes);
  if (settings.planes.has_quantised() || !by_strips) {
    call_library(handle_, settings, frame.bit_depth,
                 {frame.samples.data(), frame.width, frame.height}, targets);
  }
  if (by_strips) fill_normalized_stokes_by_strips(handle_, frame, settings, planes);
}

}  // namespace kv
