// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "toolkit/pictures/colour_spaces.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace kv::polarization {

double srgb_encoded(double linear) {
  return linear <= 0.0031308 ? 12.92 * linear : 1.055 * std::pow(linear, 1.0 / 2.4) - 0.055;
}

EncodedRgb from_oklch(double lightness, double chroma, double hue_degrees) {
  const double hue = hue_degrees * std::numbers::pi / 180.0;
  const double a = chroma * std::cos(hue);
  const double b = chroma * std::sin(hue);
  const auto cube = [](double root) { return root * root * root; };
  const double l = cube(lightness + 0.3963377774 * a + 0.2158037573 * b);
  const double m = cube(lightness - 0.1055613458 * a - 0.0638541728 * b);
  const double s = cube(lightness - 0.0894841775 * a - 1.2914855480 * b);
  const EncodedRgb linear = {4.0767416621 * l - 3.3077115913 * m + 0.2309699292 * s,
                             -1.2684380046 * l + 2.6097574011 * m - 0.3413193965 * s,
                             -0.0041960863 * l - 0.7034186147 * m + 1.7076147010 * s};
  EncodedRgb encoded{};
  std::transform(linear.begin(), linear.end(), encoded.begin(),
                 [](double channel) { return srgb_encoded(std::clamp(channel, 0.0, 1.0)); });
  return encoded;
}

std::uint8_t to_byte(double zero_to_one) {
  return static_cast<std::uint8_t>(std::lround(255.0 * std::clamp(zero_to_one, 0.0, 1.0)));
}

Colour to_colour(const EncodedRgb& rgb) {
  return {to_byte(rgb[0]), to_byte(rgb[1]), to_byte(rgb[2])};
}

}  // namespace kv::polarization
