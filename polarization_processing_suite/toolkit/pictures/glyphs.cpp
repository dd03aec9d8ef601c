#include "toolkit/pictures/glyphs.h"

#include <algorithm>
#include <array>

namespace kv::polarization {
namespace {

constexpr int kGlyphWidth = 5;

struct Glyph {
  char sign;
  std::array<std::string_view, kGlyphHeight> rows;
};

constexpr std::array<Glyph, 17> kGlyphs = {{
    {'0', {" ### ", "#   #", "#   #", "#   #", "#   #", "#   #", " ### "}},
    {'1', {"  #  ", " ##  ", "  #  ", "  #  ", "  #  ", "  #  ", " ### "}},
    {'2', {" ### ", "#   #", "    #", "   # ", "  #  ", " #   ", "#####"}},
    {'3', {" ### ", "#   #", "    #", "  ## ", "    #", "#   #", " ### "}},
    {'4', {"   # ", "  ## ", " # # ", "#  # ", "#####", "   # ", "   # "}},
    {'5', {"#####", "#    ", "#### ", "    #", "    #", "#   #", " ### "}},
    {'6', {" ### ", "#    ", "#    ", "#### ", "#   #", "#   #", " ### "}},
    {'7', {"#####", "    #", "   # ", "  #  ", "  #  ", "  #  ", "  #  "}},
    {'8', {" ### ", "#   #", "#   #", " ### ", "#   #", "#   #", " ### "}},
    {'9', {" ### ", "#   #", "#   #", " ####", "    #", "    #", " ### "}},
    {'.', {"     ", "     ", "     ", "     ", "     ", " ##  ", " ##  "}},
    {'-', {"     ", "     ", "     ", " ### ", "     ", "     ", "     "}},
    {'D', {"###  ", "#  # ", "#   #", "#   #", "#   #", "#  # ", "###  "}},
    {'o', {"     ", "     ", " ### ", "#   #", "#   #", "#   #", " ### "}},
    {'L', {"#    ", "#    ", "#    ", "#    ", "#    ", "#    ", "#####"}},
    {'P', {"#### ", "#   #", "#   #", "#### ", "#    ", "#    ", "#    "}},
    {'\'', {" ##  ", "#  # ", "#  # ", " ##  ", "     ", "     ", "     "}},
}};

void draw_dot(Picture& picture, int left, int top, int size, const Colour& colour) {
  for (int row = std::max(top, 0); row < std::min(top + size, picture.height); ++row) {
    for (int column = std::max(left, 0); column < std::min(left + size, picture.width); ++column) {
      std::copy(colour.begin(), colour.end(), picture.pixel(column, row));
    }
  }
}

void draw_glyph(Picture& picture, const Glyph& glyph, int left, int top, int scale,
                const Colour& colour) {
  for (int row = 0; row < kGlyphHeight; ++row) {
    for (int column = 0; column < kGlyphWidth; ++column) {
      if (glyph.rows[static_cast<std::size_t>(row)][static_cast<std::size_t>(column)] == '#') {
        draw_dot(picture, left + column * scale, top + row * scale, scale, colour);
      }
    }
  }
}

}  // namespace

void draw_text(Picture& picture, std::string_view text, int centre_column, int centre_row,
               int scale, const Colour& colour) {
  int left = centre_column - text_width(text, scale) / 2;
  const int top = centre_row - scale * kGlyphHeight / 2;
  for (const char sign : text) {
    const auto glyph = std::find_if(kGlyphs.begin(), kGlyphs.end(), [sign](const Glyph& candidate) {
      return candidate.sign == sign;
    });
    if (glyph != kGlyphs.end()) draw_glyph(picture, *glyph, left, top, scale, colour);
    left += scale * kGlyphAdvance;
  }
}

}  // namespace kv::polarization
