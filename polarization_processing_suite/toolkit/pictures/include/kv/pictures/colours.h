// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>

#include "kv/polarization/picture.h"

namespace kv::polarization {

/// The circle of pure colours that stand for angles of linear polarization, once round in 180
/// degrees. In both, 0 (along the rows) is red, and counter-clockwise 45 is yellow-green, 90 cyan,
/// 135 violet.
enum class HueCircle : std::uint8_t {
  hsv,  ///< round the edges of the colour hexagon: vivid, but yellow and cyan look brighter
  even  ///< constant lightness 0.75 and chroma 0.127 in OKLCh: equal steps of angle look alike
};

/// What unpolarized light looks like; full colour stands for the DoLP that is shown as white.
enum class Unpolarized : std::uint8_t {
  black,  ///< DoLP as value, for screens
  white   ///< DoLP as saturation, for print
};

/// How angle pictures are coloured.
struct AngleStyle {
  HueCircle hues = HueCircle::hsv;               ///< of fully polarized light
  Unpolarized unpolarized = Unpolarized::black;  ///< what they fade to
};

/// The pure colour of an angle; angles that differ by 180 degrees have the same one.
Colour angle_colour(HueCircle hues, double degrees);

/// From the neutral colour at weight 0 to the pure one at 255, linearly in sRGB. On the way all
/// hues of the even circle stay of one lightness, within 0.004 towards black and 0.02 towards
/// white.
Colour mixed(const Colour& pure, Unpolarized neutral, std::uint8_t weight);

/// The diverging scale of S1/S0 and S2/S0, from -1, blue, over 0, a light grey, to 1, red: in OKLCh
/// from lightness 0.96 linearly down to 0.5, and from chroma 0 up to 0.2.
Colour diverging_colour(double minus_one_to_one);

}  // namespace kv::polarization
