// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include <algorithm>

#include "kv/pictures/colours.h"
#include "toolkit/calibration/report/map_pictures.h"
#include "toolkit/calibration/report/number_text.h"
#include "toolkit/calibration/report/sections.h"

namespace kv::polarization {
namespace {

constexpr int kScaleSteps = 60;
constexpr double kScaleStepWidth = 5;  ///< in units of the SVG

std::string hexadecimal(const Colour& colour) {
  constexpr std::string_view digits = "0123456789abcdef";
  std::string text = "#";
  for (const std::uint8_t channel : colour) {
    text += digits[channel >> 4];
    text += digits[channel & 15];
  }
  return text;
}

/// A bar of colours from `first` to 1 of diverging_colour, over its three marks.
void add_scale_bar(HtmlWriter& page, double first, const std::array<std::string, 3>& marks) {
  const auto svg = page.open("svg", {{"viewBox", "0 0 320 34"},
                                     {"class", "scale"},
                                     {"role", "img"},
                                     {"aria-label", "scale from " + marks[0] + " to " + marks[2]}});
  for (int step = 0; step < kScaleSteps; ++step) {
    const double share = (step + 0.5) / kScaleSteps;
    page.empty("rect", {{"x", coordinate(10 + kScaleStepWidth * step)},
                        {"y", "0"},
                        {"width", coordinate(kScaleStepWidth + 0.3)},
                        {"height", "14"},
                        {"fill", hexadecimal(diverging_colour(first + (1 - first) * share))}});
  }
  const std::array<std::string, 3> anchors{"start", "middle", "end"};
  for (std::size_t i = 0; i < 3; ++i) {
    const double x = 10 + kScaleStepWidth * kScaleSteps / 2 * static_cast<double>(i);
    page.element("text", marks[i], {{"x", coordinate(x)}, {"y", "28"}, {"class", anchors[i]}});
  }
}

void add_image(HtmlWriter& page, const IndexedImage& image, std::string description) {
  page.empty("img", {{"src", data_address(image)},
                     {"width", std::to_string(image.width)},
                     {"height", std::to_string(image.height)},
                     {"alt", std::move(description)}});
}

void add_property(HtmlWriter& page, const PixelProperty& property,
                  const std::array<ReducedMap, 4>& maps) {
  const double end = scale_end(maps);
  page.element("h3", property.name);
  {
    const auto row = page.open("div", {{"class", "row four"}});
    for (std::size_t i = 0; i < maps.size(); ++i) {
      const std::string name = std::to_string(45 * i) + "°";
      const auto figure = page.open("figure");
      add_image(page, diverging_image(maps[i], end),
                "map of " + std::string(property.name) + " at " + name);
      page.element("figcaption", name);
    }
  }
  const std::string limit = with_unit(end, property.unit, 1);
  add_scale_bar(page, -1, {"\u2212" + limit, "0", "+" + limit});
}

struct ReasonText {
  bad_pixel::Reason reason;
  std::string_view text;
};
constexpr std::array<ReasonText, 4> kReasons{{
    {bad_pixel::clipped, "at the clip level in a frame that was used"},
    {bad_pixel::noisy, "residuals far beyond the noise"},
    {bad_pixel::out_of_range, "gain, diattenuation or orientation far from those of its class"},
    {bad_pixel::dark_defect, "black level or dark noise far from those of its class"},
}};

/// The first row is that of all bad pixels.
void add_reasons(HtmlWriter& page, const Calibration& calibration) {
  const Buffer<std::uint8_t>& bad = calibration.maps.bad;
  const auto add = [&](Table& table, std::string_view name, int bits) {
    const auto count = std::count_if(bad.begin(), bad.end(),
                                     [bits](std::uint8_t flags) { return (flags & bits) != 0; });
    table.row({name, count_text(static_cast<std::uint64_t>(count)),
               percentage(static_cast<double>(count) / static_cast<double>(bad.size()))});
  };
  Table table(page, {"Reason", "Pixels", "Share"});
  add(table, "any", 255);
  for (const ReasonText& reason : kReasons) add(table, reason.text, reason.reason);
}

}  // namespace

void add_maps(HtmlWriter& page, const Calibration& calibration, const PropertySamples& samples) {
  const auto section = page.open("section");
  page.element("h2", "Maps");
  std::array<std::array<ReducedMap, 4>, 3> maps;
  for (std::size_t i = 0; i < maps.size(); ++i) {
    maps[i] = reduced_maps(calibration, kPixelProperties[i], samples[i]);
  }
  const int block = maps[0][0].block;
  const std::string side = count_text(static_cast<std::uint64_t>(block));
  page.element("p",
               "How the properties of pixels vary over the sensor: deviations from the mean of "
               "their class, each point the mean of " +
                   (block > 1 ? side + " × " + side + " pixels of the class. "
                              : std::string("one pixel of the class. ")) +
                   "Colours beyond the ends of a scale are those of its ends, 1 per cent of the "
                   "points; grey has no good pixel. Even colour is best; smooth changes come from "
                   "the sensor or from a source that is not uniform; edges, rings and stripes are "
                   "worth a look at source and optics.");
  for (std::size_t i = 0; i < maps.size(); ++i) add_property(page, kPixelProperties[i], maps[i]);
}

void add_bad_pixels(HtmlWriter& page, const Calibration& calibration) {
  const auto section = page.open("section");
  page.element("h2", "Bad pixels");
  page.element("p", "A pixel can be bad for several reasons, and then counts in each line.");
  add_reasons(page, calibration);
  const BadPixelMap map = bad_pixel_map(calibration);
  if (map.most == 0) return page.element("p", "There are none to show on a map.");
  const auto figure = page.open("figure", {{"class", "large"}});
  add_image(page, map.image, "map of bad pixels");
  const std::string side = std::to_string(map.block);
  add_scale_bar(page, 0.4, {"1", "", std::to_string(map.most)});
  page.element("figcaption", "Bad pixels in each block of " + side + " × " + side +
                                 "; the lightest colour has none.");
}

}  // namespace kv::polarization
