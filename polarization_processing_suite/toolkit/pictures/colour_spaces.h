// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <array>

#include "kv/polarization/picture.h"

namespace kv::polarization {

/// Red, green and blue from 0 to 1, encoded as sRGB.
using EncodedRgb = std::array<double, 3>;

/// Encodes linear light from 0 to 1 as IEC 61966-2-1 defines it.
double srgb_encoded(double linear);

/// A colour of OKLCh: the polar form of OKLab, Björn Ottosson 2020, in which equal distances look
/// alike. What lies outside of sRGB is clamped.
EncodedRgb from_oklch(double lightness, double chroma, double hue_degrees);

/// Bounds to 0..1 and rounds to 0..255.
std::uint8_t to_byte(double zero_to_one);
Colour to_colour(const EncodedRgb& rgb);

}  // namespace kv::polarization
