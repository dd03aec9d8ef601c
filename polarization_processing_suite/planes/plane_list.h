// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace kv {

/// The planes that a frame can be turned into, in the order of the transform's arguments.
enum class Plane : std::uint8_t {
  normalized_stokes,
  intensity,
  stokes_s1,
  stokes_s2,
  azimuth,
  dolp
};

/// What the plane holds of each pixel.
enum class PlaneElement : std::uint8_t {
  float_pair,  ///< Two 32-bit floats.
  level        ///< An unsigned 16-bit number from 0 to output_max.
};

/// What of a pixel's polarization the element is made of.
enum class PlaneSource : std::uint8_t { ratios, s0, s1, s2, azimuth, dolp };

/// A line of the list of planes.
struct PlaneTraits {
  Plane plane;            ///< whose line it is
  std::string_view name;  ///< for files, options and dictionaries
  PlaneElement element;   ///< what is stored of a pixel
  PlaneSource source;     ///< what it is made of

  /// Linear planes are in the units of the samples, and can be scaled.
  constexpr bool is_linear() const {
    return source == PlaneSource::s0 || source == PlaneSource::s1 || source == PlaneSource::s2;
  }
};

/// The one list of planes, from which kernels, checks, names, files and options are made.
inline constexpr std::array<PlaneTraits, 6> kPlanes{{
    {Plane::normalized_stokes, "normalized_stokes", PlaneElement::float_pair, PlaneSource::ratios},
    {Plane::intensity, "intensity", PlaneElement::level, PlaneSource::s0},
    {Plane::stokes_s1, "stokes_s1", PlaneElement::level, PlaneSource::s1},
    {Plane::stokes_s2, "stokes_s2", PlaneElement::level, PlaneSource::s2},
    {Plane::azimuth, "azimuth", PlaneElement::level, PlaneSource::azimuth},
    {Plane::dolp, "dolp", PlaneElement::level, PlaneSource::dolp},
}};

/// The line of a plane, and its place in the list.
constexpr std::size_t index_of(Plane plane) { return static_cast<std::size_t>(plane); }
constexpr const PlaneTraits& traits_of(Plane plane) { return kPlanes[index_of(plane)]; }
/// What index_of() rests upon.
constexpr bool is_listed_in_order() {
  for (std::size_t index = 0; index < kPlanes.size(); ++index) {
    if (index_of(kPlanes[index].plane) != index) return false;
  }
  return true;
}
static_assert(is_listed_in_order(), "a plane is the number of its line in the list");

/// The plane of that name, in this spelling.
constexpr std::optional<Plane> plane_named(std::string_view name) {
  for (const PlaneTraits& traits : kPlanes) {
    if (traits.name == name) return traits.plane;
  }
  return std::nullopt;
}

/// A choice of planes.
struct OutputSet {
  std::uint8_t bits = 0;  ///< One for each plane, the first plane's the lowest.

  constexpr OutputSet() = default;

  /// Of the planes that are named.
  template <class... Planes>
  constexpr explicit OutputSet(Plane first, Planes... others) {
    add(first);
    (add(others), ...);
  }

  /// Of the 64 sets in the order of their bits, the empty one being 0.
  static constexpr OutputSet from_number(std::size_t number) {
    OutputSet set;
    set.bits = static_cast<std::uint8_t>(number);
    return set;
  }

  /// Of all six.
  static constexpr OutputSet all() { return from_number((1u << kPlanes.size()) - 1); }

  /// Members of the choice.
  constexpr void add(Plane plane) {
    bits = static_cast<std::uint8_t>(bits | 1u << index_of(plane));
  }
  constexpr bool has(Plane plane) const { return (bits >> index_of(plane) & 1u) != 0; }
  constexpr bool empty() const { return bits == 0; }
  constexpr bool operator==(const OutputSet&) const = default;

  /// Whether any of its planes is of the kind that `is_of_kind` tells from a line of the list.
  template <class Predicate>
  constexpr bool has_any(Predicate is_of_kind) const {
    for (const PlaneTraits& traits : kPlanes) {
      if (has(traits.plane) && is_of_kind(traits)) return true;
    }
    return false;
  }
};

}  // namespace kv
