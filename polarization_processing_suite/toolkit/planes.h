#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "planes/plane_list.h"
#include "toolkit/frame.h"

namespace kv {

/// The planes of one frame; those that were not asked for are empty.
struct Planes {
  int width = 0;
  int height = 0;
  std::vector<float> normalized_stokes;  ///< two a pixel: S1/S0, S2/S0

  /// Any plane but normalized_stokes.
  std::vector<std::uint16_t>& levels(Plane plane) { return levels_[index_of(plane)]; }
  const std::vector<std::uint16_t>& levels(Plane plane) const { return levels_[index_of(plane)]; }

  /// Makes room for those of a frame; buffers of an earlier frame are used again. A transform does
  /// it too: called before, it keeps the cost of fresh memory out of the transform.
  void make_room(const Frame& frame, OutputSet wanted);

  /// Work space of the transform, kept from frame to frame: pairs that are not yet in their places.
  std::vector<float> packed_pairs;

 private:
  std::array<std::vector<std::uint16_t>, kPlanes.size()> levels_;
};

}  // namespace kv
