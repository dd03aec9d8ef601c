#include "toolkit/api/request_checks.h"

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "kv/polarization/fault.h"

namespace kv::polarization {
namespace {

[[noreturn]] void refuse(const std::string& line) { throw Fault(FaultKind::argument, line); }

struct NamedMemory {
  std::string_view name;
  std::span<const std::byte> bytes;
};

bool overlap(std::span<const std::byte> a, std::span<const std::byte> b) {
  // The built-in comparison of pointers into different arrays has no meaning; this one has.
  const std::less<> before;
  return before(a.data(), b.data() + b.size()) && before(b.data(), a.data() + a.size());
}

void check_overlap(const std::vector<NamedMemory>& all) {
  for (std::size_t i = 1; i < all.size(); ++i) {
    for (std::size_t j = 0; j < i; ++j) {
      if (overlap(all[i].bytes, all[j].bytes)) {
        refuse("the memory of " + std::string(all[i].name) + " overlaps that of " +
               std::string(all[j].name) + "; each needs memory of its own");
      }
    }
  }
}

void check_size(std::string_view name, std::size_t size, std::size_t needed) {
  if (size >= needed) return;
  refuse("the plane " + std::string(name) + " has room for " + std::to_string(size) +
         " elements; this frame fills " + std::to_string(needed));
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

void check_cells(const FrameView& frame) {
  check(frame);
  const std::string size = "a frame of " + std::to_string(frame.width) + " x " +
                           std::to_string(frame.height) + " pixels";
  if (frame.width < 2 || frame.height < 2) {
    refuse(size + " holds no 2 x 2 cell; width and height must be 2 or more");
  }
  // The library would run past its buffers and never return.
  if (frame.width < 4 && frame.height > 2) {
    refuse(size + " is too narrow; with a height above 2 the width must be 4 or more");
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
      check_size(traits.name, planes.normalized_stokes.size(), 2 * pixels);
      memory.push_back({traits.name, std::as_bytes(planes.normalized_stokes)});
    } else {
      const LevelView& view = planes.level(traits.plane);
      check_size(traits.name, view.levels.size(), pixels);
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
