#include "toolkit/pictures/legend.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <numbers>
#include <string>

#include "toolkit/pictures/glyphs.h"
#include "toolkit/pictures/hue.h"

namespace kv::polarization {
namespace {

constexpr Colour kPanelColour = {32, 32, 32};
constexpr Colour kTextColour = {230, 230, 230};

/// Below this width the labels around the wheel, of one pixel a dot, would overlap.
constexpr int kLeastPanelWidth = 96;

constexpr int text_scale(int panel_width) { return panel_width / kLeastPanelWidth; }

struct Wheel {
  int centre_column;
  int centre_row;
  int radius;
};

std::uint8_t blend(std::uint8_t below, double above, double coverage) {
  return static_cast<std::uint8_t>(std::lround(below + (above - below) * coverage));
}

void draw_wheel_pixel(Picture& picture, const Wheel& wheel, int right, int up) {
  const double distance = std::hypot(right, up);
  // The rim is smoothed over one pixel.
  const double coverage = std::clamp(wheel.radius + 0.5 - distance, 0.0, 1.0);
  if (coverage == 0.0) return;
  const auto hue = hue_of_angle(std::atan2(up, right) * 180.0 / std::numbers::pi);
  const double value = 255.0 * std::min(distance / wheel.radius, 1.0);
  std::uint8_t* pixel = picture.pixel(wheel.centre_column + right, wheel.centre_row - up);
  for (std::size_t i = 0; i < 3; ++i) pixel[i] = blend(pixel[i], hue[i] * value, coverage);
}

void draw_wheel(Picture& picture, const Wheel& wheel) {
  for (int up = -wheel.radius - 1; up <= wheel.radius + 1; ++up) {
    for (int right = -wheel.radius - 1; right <= wheel.radius + 1; ++right) {
      draw_wheel_pixel(picture, wheel, right, up);
    }
  }
}

void draw_angle_label(Picture& picture, const Wheel& wheel, int degrees, int scale) {
  const std::string text = std::to_string(degrees) + "'";
  const double angle = degrees * std::numbers::pi / 180.0;
  // Half the text's extent in this direction keeps the text clear of the rim.
  const double reach = wheel.radius + 3.0 * scale +
                       std::abs(std::cos(angle)) * text_width(text, scale) / 2.0 +
                       std::abs(std::sin(angle)) * kGlyphHeight * scale / 2.0;
  draw_text(picture, text,
            wheel.centre_column + static_cast<int>(std::lround(reach * std::cos(angle))),
            wheel.centre_row - static_cast<int>(std::lround(reach * std::sin(angle))), scale,
            kTextColour);
}

std::string short_number(double value) {
  char text[16];
  std::snprintf(text, sizeof text, "%.2g", value);
  return text;
}

}  // namespace

int angle_legend_width(int picture_height) {
  const int width = std::min(picture_height / 4, 600);
  return width < kLeastPanelWidth ? 0 : width;
}

void draw_angle_legend(Picture& picture, int left, double dolp_white) {
  for (int row = 0; row < picture.height; ++row) {
    for (int column = left; column < picture.width; ++column) {
      std::copy(kPanelColour.begin(), kPanelColour.end(), picture.pixel(column, row));
    }
  }
  const int panel_width = picture.width - left;
  const int scale = text_scale(panel_width);
  const Wheel wheel = {left + panel_width / 2, picture.height - panel_width * 3 / 4,
                       panel_width * 5 / 16};
  draw_wheel(picture, wheel);
  for (const int degrees : {0, 45, 90, 135}) draw_angle_label(picture, wheel, degrees, scale);
  draw_text(picture, "DoLP 0-" + short_number(dolp_white), wheel.centre_column,
            picture.height - panel_width / 4, scale, kTextColour);
}

}  // namespace kv::polarization
