// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "toolkit/pictures/glyphs.h"

#include <string>

#include "toolkit/pictures/glyph_table.h"
#include "toolkit/pictures/paint.h"

namespace kv::polarization {
namespace {

/// One byte a sign, each with a glyph.
std::string signs_of(std::string_view text) {
  std::string signs;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text.substr(i, kDegreeSign.size()) == kDegreeSign) {
      signs += kDegree;
      i += kDegreeSign.size() - 1;
    } else {
      signs += text[i] >= ' ' && text[i] <= '~' ? text[i] : '?';
    }
  }
  return signs;
}

void draw_glyph(Picture& picture, const Glyph& glyph, int left, int top, int scale,
                const Colour& colour) {
  for (int row = 0; row < kGlyphHeight; ++row) {
    for (int column = 0; column < kGlyphWidth; ++column) {
      if (glyph.rows[static_cast<std::size_t>(row)][static_cast<std::size_t>(column)] == '#') {
        fill(picture, {left + column * scale, top + row * scale, scale, scale}, colour);
      }
    }
  }
}

}  // namespace

int text_width(std::string_view text, int scale) {
  const int signs = static_cast<int>(signs_of(text).size());
  return signs == 0 ? 0 : scale * (kGlyphAdvance * signs - (kGlyphAdvance - kGlyphWidth));
}

void draw_text(Picture& picture, std::string_view text, int left, int top, int scale,
               const Colour& colour) {
  for (const char sign : signs_of(text)) {
    const int descent = kDescenders.find(sign) == std::string_view::npos ? 0 : kDescent * scale;
    draw_glyph(picture, kGlyphs[static_cast<std::size_t>(sign - ' ')], left, top + descent, scale,
               colour);
    left += scale * kGlyphAdvance;
  }
}

void draw_text_centred(Picture& picture, std::string_view text, int centre_column, int centre_row,
                       int scale, const Colour& colour) {
  draw_text(picture, text, centre_column - text_width(text, scale) / 2,
            centre_row - scale * kGlyphHeight / 2, scale, colour);
}

}  // namespace kv::polarization
