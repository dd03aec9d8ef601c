#include "glyphs.h"

#include <algorithm>
#include <array>

namespace kv {
namespace {

constexpr int glyph_width = 5;

struct Glyph {
  char sign;
  std::array<std::string_view, glyph_height> rows;
};

constexpr std::array<Glyph, 17> glyphs = {{
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

void draw_dot(Picture& picture, int left, int top, int size, const Color& color) {
  for (int row = std::max(top, 0); row < std::min(top + size, picture.height); ++row) {
    for (int column = std::max(left, 0); column < std::min(left + size, picture.width); ++column) {
      std::copy(color.begin(), color.end(), picture.pixel(column, row));
    }
  }
}

void draw_glyph(Picture& picture, const Glyph& glyph, int left, int top, int scale,
                const Color& color) {
  for (int row = 0; row < glyph_height; ++row) {
    for (int column = 0; column < glyph_width; ++column) {
      if (glyph.rows[static_cast<std::size_t>(row)][static_cast<std::size_t>(column)] == '#') {
        draw_dot(picture, left + column * scale, top + row * scale, scale, color);
      }
    }
  }
}

}  // namespace

void draw_text(Picture& picture, std::string_view text, int center_column, int center_row,
               int scale, const Color& color) {
  int left = center_column - text_width(text, scale) / 2;
  const int top = center_row - scale * glyph_height / 2;
  for (const char sign : text) {
    const auto glyph = std::find_if(glyphs.begin(), glyphs.end(), [sign](const Glyph& candidate) {
      return candidate.sign == sign;
    });
    if (glyph != glyphs.end()) draw_glyph(picture, *glyph, left, top, scale, color);
    left += scale * glyph_advance;
  }
}

}  // namespace kv
