// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "toolkit/api/request_checks.h"

#include <string>
#include <vector>

#include "toolkit/api/memory_checks.h"

namespace kv::polarization {
namespace {

std::string size_text(const FrameView& frame) {
  return "a frame of " + std::to_string(frame.width) + " x " + std::to_string(frame.height) +
         " pixels";
}

}  // namespace

OutputSet wanted_of(const PlaneViews& planes) {
  OutputSet wanted;
  for (const PlaneTraits& traits : kPlanes) {
    const bool is_wanted = traits.element == PlaneElement::level
                               ? !planes.level(traits.plane).levels.empty()
                               : !planes.normalized_stokes.empty();
    if (is_wanted) wanted.add(traits.plane);
  }
  return wanted;
}

void check_mosaic_frame(const FrameView& frame) {
  check(frame);
  if (frame.width < 2 || frame.height < 2) {
    refuse(size_text(frame) + " holds no 2 x 2 cell; width and height must be 2 or more");
  }
}

void check_cells(const FrameView& frame) {
  check_mosaic_frame(frame);
  // The library would run past its buffers and never return.
  if (frame.width < 4 && frame.height > 2) {
    refuse(size_text(frame) + " is too narrow; with a height above 2 the width must be 4 or more");
  }
}

void check(const Mosaic& mosaic) {
  if (mosaic.phase < kv_polar_phase_0 || mosaic.phase > kv_polar_phase_135) {
    refuse("the phase is unknown; it must be that of 0, 45, 90 or 135 degrees");
  }
  if (mosaic.x_origin < 0 || mosaic.y_origin < 0) {
    refuse("the origin is negative; its column and row must be 0 or more");
  }
}

void check_request(const FrameView& frame, const Mosaic& mosaic, const PlaneViews& planes) {
  check_cells(frame);
  check(mosaic);
  const std::size_t pixels = pixel_count(frame.width, frame.height);
  std::vector<NamedMemory> memory = {{"the frame", frame.bytes}};
  for (const PlaneTraits& traits : kPlanes) {
    if (!wanted_of(planes).has(traits.plane)) continue;
    if (traits.element == PlaneElement::float_pair) {
      check_room(traits.name, planes.normalized_stokes.size(), 2 * pixels);
      memory.push_back({traits.name, std::as_bytes(planes.normalized_stokes)});
    } else {
      const LevelView& view = planes.level(traits.plane);
      check_room(traits.name, view.levels.size(), pixels);
      if (view.output_max == 0) {
        refuse("the output maximum of " + std::string(traits.name) +
               " is 0; it must be from 1 to 65535");
      }
      memory.push_back({traits.name, std::as_bytes(view.levels)});
    }
  }
  if (memory.size() == 1) refuse("no plane was asked for; name at least one");
  check_overlap(memory);
}

}  // namespace kv::polarization
