#include "toolkit/pictures/pictures.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "toolkit/pictures/legend.h"

using namespace kv::polarization;

namespace {

/// Planes of one angle and DoLP, but for the last pixel, which is unpolarized.
Planes uniform_planes(double degrees, double dolp, int output_max, unsigned width = 8,
                      unsigned height = 6) {
  Planes planes;
  planes.reshape(static_cast<int>(width), static_cast<int>(height), OutputSet::all(),
                 static_cast<std::uint16_t>(output_max));
  const PlaneViews views = planes.views();
  for (auto& level : views.azimuth.levels) {
    level = static_cast<std::uint16_t>((degrees + 90) / 180 * output_max + 0.5);
  }
  for (auto& level : views.dolp.levels) {
    level = static_cast<std::uint16_t>(dolp * output_max + 0.5);
  }
  views.dolp.levels.back() = 0;
  return planes;
}

void expect_colour(Picture& picture, int column, int row, const Colour& expected) {
  for (std::size_t i = 0; i < 3; ++i) {
    EXPECT_NEAR(picture.pixel(column, row)[i], expected[i], 1)
        << "column " << column << ", row " << row << ", channel " << i;
  }
}

// The hues go round once in 180 degrees. DoLP is the brightness of both pictures.
TEST(Pictures, ShowTheAngleAsHueAndDolpUpToWhite) {
  struct Case {
    double degrees, dolp, white;
    Colour colour;
  };
  const Case cases[] = {
      {0, 1, 1, {255, 0, 0}},     {30, 1, 1, {255, 255, 0}},   {45, 1, 1, {128, 255, 0}},
      {60, 1, 1, {0, 255, 0}},    {90, 1, 1, {0, 255, 255}},   {-90, 1, 1, {0, 255, 255}},
      {-45, 1, 1, {128, 0, 255}}, {-60, 1, 1, {0, 0, 255}},    {0, 0, 1, {0, 0, 0}},
      {0, 0.4, 1, {102, 0, 0}},   {60, 0.4, 0.5, {0, 204, 0}}, {0, 0.9, 0.5, {255, 0, 0}},
  };
  for (const std::uint16_t output_max : {std::uint16_t{65535}, std::uint16_t{4095}}) {
    for (const auto& [degrees, dolp, white, colour] : cases) {
      SCOPED_TRACE(testing::Message() << degrees << " degrees, DoLP " << dolp << " of " << white);
      const auto planes = uniform_planes(degrees, dolp, output_max);
      auto angle = angle_picture(planes, white);
      expect_colour(angle, 7, 4, colour);
      expect_colour(angle, 7, 5, {0, 0, 0});
      auto brightness = dolp_picture(planes, white);
      ASSERT_EQ(brightness.bytes.size(), 48u);
      EXPECT_NEAR(brightness.pixel(7, 4)[0], std::ranges::max(colour), 1);
      EXPECT_EQ(brightness.pixel(7, 5)[0], 0);
    }
  }
}

/// Pixels of the text's colour within a box of that many pixels to each side.
int bright_pixels(Picture& picture, int column, int row, int reach) {
  int count = 0;
  for (int r = row - reach; r <= row + reach; ++r) {
    for (int c = column - reach; c <= column + reach; ++c) {
      if (picture.pixel(c, r)[0] == 230 && picture.pixel(c, r)[2] == 230) ++count;
    }
  }
  return count;
}

// A picture of 1000 rows has a panel of 250 columns: its wheel has the centre (125, 813) and the
// radius 78, its letters have dots of 2 x 2 pixels.
TEST(AngleLegend, HasTheHuesAndTheLabelsAtTheirAngles) {
  auto picture = angle_picture(uniform_planes(45, 1, 65535, 100, 1000), 0.5);
  ASSERT_EQ(picture.width, 350);
  constexpr int column = 100 + 125;
  constexpr int row = 1000 - 187;
  expect_colour(picture, column, row, {0, 0, 0});
  expect_colour(picture, column + 39, row, {128, 0, 0});
  expect_colour(picture, column - 39, row, {128, 0, 0});
  expect_colour(picture, column, row - 39, {0, 128, 128});
  expect_colour(picture, column + 42, row - 42, {97, 194, 0});  // 59.4 of 78 from the centre
  expect_colour(picture, column - 42, row - 42, {97, 0, 194});
  expect_colour(picture, column, row + 80, {32, 32, 32});
  // The label's middle is 6 pixels and half of its size from the rim; dots as drawn in glyphs.cpp.
  EXPECT_EQ(bright_pixels(picture, column + 95, row, 12), 4 * (16 + 8)) << "0'";
  EXPECT_EQ(bright_pixels(picture, column + 71, row - 71, 17), 4 * (14 + 17 + 8)) << "45'";
  EXPECT_EQ(bright_pixels(picture, column, row - 91, 17), 4 * (16 + 16 + 8)) << "90'";
  EXPECT_EQ(bright_pixels(picture, column - 74, row - 74, 23), 4 * (10 + 14 + 17 + 8)) << "135'";
  EXPECT_EQ(bright_pixels(picture, column, 1000 - 62, 60), 4 * 110) << "DoLP 0-0.5";
}

TEST(AngleLegend, IsAQuarterOfTheHeightWhereItCanBeRead) {
  for (const auto& [height, width] : {std::pair{383, 0}, {384, 96}, {9000, 600}}) {
    EXPECT_EQ(angle_legend_width(height), width) << height;
  }
}

TEST(IntensityPicture, IsFreeOfTheMosaicAndStretched) {
  // Fully polarized light in the left half, half as bright unpolarized light in the right one.
  Frame frame = make_frame(64, 32, 12);
  for (std::size_t i = 0; i < frame.samples.size(); ++i) {
    const bool lit = i / 64 % 2 == 0 && i % 2 == 0;
    frame.samples[i] = static_cast<std::uint16_t>(i % 64 < 32 ? (lit ? 4000 : 0) : 500);
  }
  // A hot pixel is a part of four means, and four of these 2048 pixels may be brighter than white.
  frame.samples[10 * 64 + 50] = 65535;
  auto picture = intensity_picture(frame);
  ASSERT_EQ(picture.bytes.size(), 64u * 32u);
  for (const int row : {0, 13, 31}) {
    for (const int column : {0, 7, 30}) EXPECT_EQ(picture.pixel(column, row)[0], 255);
    // Half of white in sRGB.
    for (const int column : {32, 41, 63}) EXPECT_NEAR(picture.pixel(column, row)[0], 188, 1);
  }
  EXPECT_EQ(picture.pixel(49, 9)[0], 255);
}

}  // namespace
