#ifndef KV_TOOLKIT_PICTURES_GLYPHS_H
#define KV_TOOLKIT_PICTURES_GLYPHS_H

#include <string_view>

#include "picture.h"

namespace kv {

/// Height of a line of text and advance of a letter, in dots.
inline constexpr int glyph_height = 7;
inline constexpr int glyph_advance = 6;

/// Width of a text whose dots are `scale` pixels wide.
constexpr int text_width(std::string_view text, int scale) {
  return scale * (glyph_advance * static_cast<int>(text.size()) - 1);
}

/// Writes a text with its middle at that place. It has the signs of legends: digits, the point, the
/// minus, the letters of DoLP, and ' for degrees; others stay blank.
void draw_text(Picture& picture, std::string_view text, int center_column, int center_row,
               int scale, const Color& color);

}  // namespace kv

#endif
