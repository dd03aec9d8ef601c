// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "kv/pictures/colours.h"

#include <algorithm>
#include <cmath>

#include "toolkit/pictures/colour_lanes.h"
#include "toolkit/pictures/colour_spaces.h"

namespace kv::polarization {
namespace {

// At this lightness sRGB has room for the widest circle, whose chroma can be up to 0.1275.
constexpr double kCircleLightness = 0.75;
constexpr double kCircleChroma = 0.127;

// Hues of OKLCh in degrees: that of sRGB's red, and a blue that has as much chroma.
constexpr double kRedHue = 29.2;
constexpr double kBlueHue = 260.0;

/// Once round the six edges of the colour hexagon.
EncodedRgb hexagon_colour(double turn) {
  const auto channel = [turn](double peak) {
    const double distance = std::abs(turn * 6.0 - peak);
    return std::clamp(2.0 - std::min(distance, 6.0 - distance), 0.0, 1.0);
  };
  return {channel(0.0), channel(2.0), channel(4.0)};
}

}  // namespace

Colour angle_colour(HueCircle hues, double degrees) {
  const double turn = degrees / 180.0 - std::floor(degrees / 180.0);
  return to_colour(hues == HueCircle::hsv
                       ? hexagon_colour(turn)
                       : from_oklch(kCircleLightness, kCircleChroma, kRedHue + 360.0 * turn));
}

Colour mixed(const Colour& pure, Unpolarized neutral, std::uint8_t weight) {
  Colour colour{};
  store(neutral == Unpolarized::white ? mixed_lanes<Unpolarized::white>(lanes_of(pure), weight)
                                      : mixed_lanes<Unpolarized::black>(lanes_of(pure), weight),
        colour.data());
  return colour;
}

Colour diverging_colour(double minus_one_to_one) {
  const double strength = std::min(std::abs(minus_one_to_one), 1.0);
  return to_colour(from_oklch(0.96 - 0.46 * strength, 0.2 * strength,
                              minus_one_to_one < 0 ? kBlueHue : kRedHue));
}

}  // namespace kv::polarization
