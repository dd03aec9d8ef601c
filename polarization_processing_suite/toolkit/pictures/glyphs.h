#pragma once

#include <string_view>

#include "kv/polarization/picture.h"

namespace kv::polarization {

/// Height of a line of text and advance of a letter, in dots.
inline constexpr int kGlyphHeight = 7;
inline constexpr int kGlyphAdvance = 6;

/// Width of a text whose dots are `scale` pixels wide.
constexpr int text_width(std::string_view text, int scale) {
  return scale * (kGlyphAdvance * static_cast<int>(text.size()) - 1);
}

/// Writes a text centred on that pixel. There are glyphs for what legends need: digits, point,
/// minus, the letters of DoLP, and a degree sign for '; any other sign leaves a blank.
void draw_text(Picture& picture, std::string_view text, int centre_column, int centre_row,
               int scale, const Colour& colour);

}  // namespace kv::polarization
