// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>

#include "kv/pictures/colours.h"

namespace kv::polarization {

/// A colour in three lanes of 16 bits, red the lowest, on which one multiplication works at once.
using ColourLanes = std::uint64_t;

inline constexpr ColourLanes kOneInEachLane = 0x0001'0001'0001;

constexpr ColourLanes lanes_of(const Colour& colour) {
  return ColourLanes{colour[0]} | ColourLanes{colour[1]} << 16 | ColourLanes{colour[2]} << 32;
}

/// As mixed() in colours.h: (pure * weight + neutral * (255 - weight)) / 255 in each lane, rounded.
/// The division is that of x / 255 = (x + x / 256) / 256, exact for x up to 255 * 255 plus its
/// half.
template <Unpolarized neutral>
constexpr ColourLanes mixed_lanes(ColourLanes pure, unsigned weight) {
  const ColourLanes rest = neutral == Unpolarized::white ? 255 * (255 - weight) : 0;
  const ColourLanes sum = pure * weight + (rest + 128) * kOneInEachLane;
  return ((sum + ((sum >> 8) & 255 * kOneInEachLane)) >> 8) & 255 * kOneInEachLane;
}

/// Stores red, green and blue.
constexpr void store(ColourLanes lanes, std::uint8_t* pixel) {
  pixel[0] = static_cast<std::uint8_t>(lanes);
  pixel[1] = static_cast<std::uint8_t>(lanes >> 16);
  pixel[2] = static_cast<std::uint8_t>(lanes >> 32);
}

}  // namespace kv::polarization
