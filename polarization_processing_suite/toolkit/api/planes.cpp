// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "kv/polarization/planes.h"

namespace kv::polarization {
namespace {

/// The 16-bit planes' members, by plane.
constexpr std::array<LevelView PlaneViews::*, kPlanes.size()> kLevels = {nullptr,
                                                                         &PlaneViews::intensity,
                                                                         &PlaneViews::stokes_s1,
                                                                         &PlaneViews::stokes_s2,
                                                                         &PlaneViews::azimuth,
                                                                         &PlaneViews::dolp};

}  // namespace

const LevelView& PlaneViews::level(Plane plane) const { return this->*kLevels[index_of(plane)]; }
LevelView& PlaneViews::level(Plane plane) { return this->*kLevels[index_of(plane)]; }

void Planes::reshape(int width, int height, OutputSet wanted, std::uint16_t output_max) {
  const std::size_t pixels = pixel_count(width, height);
  for (const PlaneTraits& traits : kPlanes) {
    const std::size_t size = wanted.has(traits.plane) ? pixels : 0;
    if (traits.element == PlaneElement::float_pair) {
      normalized_stokes_.resize(2 * size);
    } else {
      levels_[index_of(traits.plane)].resize(size);
    }
  }
  width_ = width;
  height_ = height;
  wanted_ = wanted;
  output_max_ = output_max;
}

PlaneViews Planes::views() {
  PlaneViews views{.normalized_stokes = normalized_stokes_};
  for (const PlaneTraits& traits : kPlanes) {
    if (traits.element == PlaneElement::level) {
      views.level(traits.plane) = {levels_[index_of(traits.plane)], output_max_};
    }
  }
  return views;
}

}  // namespace kv::polarization
