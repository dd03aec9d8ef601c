// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string_view>

#include "kv/polarization/picture.h"

namespace kv::polarization {

/// Size of a glyph, advance of a letter and of a line, in dots.
inline constexpr int kGlyphWidth = 5;
inline constexpr int kGlyphHeight = 7;
inline constexpr int kGlyphAdvance = 6;
inline constexpr int kLineAdvance = 11;

/// The degree sign in UTF-8.
inline constexpr std::string_view kDegreeSign = "\xC2\xB0";

/// Width of a text whose dots are `scale` pixels wide.
int text_width(std::string_view text, int scale);

/// Writes a text from its top left corner. There are glyphs for the printable signs of ASCII and
/// for the degree sign; other bytes become question marks.
void draw_text(Picture& picture, std::string_view text, int left, int top, int scale,
               const Colour& colour);

void draw_text_centred(Picture& picture, std::string_view text, int centre_column, int centre_row,
                       int scale, const Colour& colour);

}  // namespace kv::polarization
