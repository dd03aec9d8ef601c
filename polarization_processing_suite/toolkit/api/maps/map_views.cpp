// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "kv/polarization/maps.h"

namespace kv::polarization {
namespace {

/// The float maps' members, by map.
constexpr std::array<std::span<float> MapViews::*, index_of(Map::quality)> kValues = {
    &MapViews::s0,         &MapViews::s1,         &MapViews::s2,
    &MapViews::dolp,       &MapViews::angle,      &MapViews::debiased_dolp,
    &MapViews::s0_sigma,   &MapViews::s1_sigma,   &MapViews::s2_sigma,
    &MapViews::dolp_sigma, &MapViews::angle_sigma};

}  // namespace

std::span<float> MapViews::values(Map map) const { return this->*kValues[index_of(map)]; }
std::span<float>& MapViews::values(Map map) { return this->*kValues[index_of(map)]; }

void Maps::reshape(int width, int height, MapSet wanted) {
  const std::size_t pixels = pixel_count(width, height);
  for (const MapTraits& traits : kMaps) {
    const std::size_t size = wanted.has(traits.map) ? pixels : 0;
    if (traits.map == Map::quality) {
      quality_.resize(size);
    } else {
      values_[index_of(traits.map)].resize(size);
    }
  }
  width_ = width;
  height_ = height;
  wanted_ = wanted;
}

MapViews Maps::views() {
  MapViews views{.quality = quality_};
  for (std::size_t index = 0; index < values_.size(); ++index) {
    views.values(kMaps[index].map) = values_[index];
  }
  return views;
}

}  // namespace kv::polarization
