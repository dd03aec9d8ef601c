// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "planes/plane_list.h"

namespace kv::test {

constexpr std::size_t element_size(Plane plane) {
  return traits_of(plane).element == PlaneElement::level ? sizeof(std::uint16_t) : sizeof(float);
}
constexpr std::size_t pixel_size(Plane plane) {
  return traits_of(plane).element == PlaneElement::level ? sizeof(std::uint16_t)
                                                         : 2 * sizeof(float);
}

/// Points a record that names the planes as a transform does to `memory(plane)` for those wanted,
/// and to null for the others.
template <class Record, class Memory>
void point_to_planes(Record& record, OutputSet wanted, const Memory& memory) {
  const auto point = [&]<class Element>(Element*& pointer, Plane plane) {
    pointer = wanted.has(plane) ? static_cast<Element*>(memory(plane)) : nullptr;
  };
  point(record.normalized_stokes, Plane::normalized_stokes);
  point(record.intensity, Plane::intensity);
  point(record.stokes_s1, Plane::stokes_s1);
  point(record.stokes_s2, Plane::stokes_s2);
  point(record.azimuth, Plane::azimuth);
  point(record.dolp, Plane::dolp);
}

/// Memory for the six planes of a frame, each between guards. All of it starts out as one byte.
class Planes {
 public:
  static constexpr std::size_t kGuard = 256;  ///< Bytes, more than a kernel stores at once.
  static constexpr unsigned char kFill = 0xA5;

  explicit Planes(std::size_t pixels);
  void clear();

  template <class Record>
  void hand_to(Record& record, OutputSet wanted = OutputSet::all()) {
    point_to_planes(record, wanted,
                    [&](Plane plane) -> void* { return bytes_[index_of(plane)].data() + kGuard; });
  }

  const std::vector<unsigned char>& bytes(Plane plane) const { return bytes_[index_of(plane)]; }
  int level(Plane plane, std::size_t pixel) const;
  /// S1/S0 and S2/S0.
  std::array<float, 2> ratios(std::size_t pixel) const;
  bool untouched() const;

 private:
  std::array<std::vector<unsigned char>, kPlanes.size()> bytes_;
};

/// Says where planes of a frame `width` columns wide first differ from what they should be, guards
/// included; planes that are not wanted should be untouched. Empty if they don't differ.
std::string difference(const Planes& actual, const Planes& expected, std::size_t width,
                       OutputSet wanted = OutputSet::all());

}  // namespace kv::test
