// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "kv/pictures/legend.h"

#include <algorithm>

#include "toolkit/pictures/colour_spaces.h"
#include "toolkit/pictures/glyphs.h"
#include "toolkit/pictures/paint.h"
#include "toolkit/pictures/panel.h"

namespace kv::polarization {
namespace {

/// The widest dots with which the legend fits; 0 when none do.
int dot_size(const Legend& legend, int picture_height) {
  return std::min(std::max(1, picture_height / kRowsOfDot), picture_height / panel_height(legend));
}

constexpr int kBarColours = 256;

template <class ColourAt>
ScaleBar bar(ColourAt colour_at, std::array<std::string, 3> marks) {
  ScaleBar result{.colours = {}, .marks = std::move(marks)};
  for (int i = 0; i < kBarColours; ++i) {
    result.colours.push_back(colour_at(static_cast<double>(i) / (kBarColours - 1)));
  }
  return result;
}

Colour grey(double zero_to_one) {
  const std::uint8_t level = to_byte(zero_to_one);
  return {level, level, level};
}

std::string per_cent(double share) { return short_number(100.0 * share) + "%"; }

}  // namespace

Legend intensity_legend(const PictureMaps& maps) {
  const double white = brightness_white_of(maps) / 65535.0;
  return {.title = "Intensity",
          .scale = bar([](double share) { return grey(srgb_encoded(share)); },
                       {"0%", per_cent(white / 2), per_cent(white)}),
          .notes = {"mean of 2 x 2 samples in % of full scale", "encoded as sRGB"}};
}

Legend dolp_legend(double dolp_white) {
  return {.title = "Degree of linear polarization",
          .scale = bar(grey, {"0", short_number(dolp_white / 2), short_number(dolp_white)}),
          .notes = {"no unit; 1 is fully polarized"}};
}

Legend angle_legend(double dolp_white, AngleStyle style) {
  const bool is_light = style.unpolarized == Unpolarized::white;
  const std::string depth = is_light ? "saturation" : "brightness";
  std::string title = "Angle of linear polarization";
  if (style.hues == HueCircle::even) title += ", even hues";
  if (is_light) title += ", light";
  return {.title = title,
          .scale = AngleWheel{style},
          .notes = {"hue: angle from the rows, degrees counter-clockwise",
                    depth + ": DoLP 0 to " + short_number(dolp_white)}};
}

Legend ratio_legend(StokesRatio ratio, double limit) {
  const bool is_s1 = ratio == StokesRatio::s1;
  const auto angle = [](int degrees) { return std::to_string(degrees) + std::string(kDegreeSign); };
  return {.title = is_s1 ? "S1/S0" : "S2/S0",
          .scale = bar([](double share) { return diverging_colour(2 * share - 1); },
                       {short_number(-limit), "0", short_number(limit)}),
          .notes = {"ratio, no unit", "red: " + angle(is_s1 ? 0 : 45),
                    "blue: " + angle(is_s1 ? 90 : 135)}};
}

int legend_width(const Legend& legend, int picture_height) {
  return kPanelWidth * dot_size(legend, picture_height);
}

Picture with_legend(Picture picture, const Legend& legend) {
  const int scale = dot_size(legend, picture.height);
  if (scale == 0) return picture;
  Picture result(picture.width + kPanelWidth * scale, picture.height, picture.channels);
  paste(picture, result, 0, 0);
  draw_panel(result, picture.width, scale, legend);
  return result;
}

}  // namespace kv::polarization
