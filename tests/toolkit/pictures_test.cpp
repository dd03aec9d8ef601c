#include "toolkit/pictures/pictures.h"

#include <gtest/gtest.h>

#include "toolkit/pictures/legend.h"

namespace {

/// Uniform planes with that angle and degree of polarization.
kv::Planes uniform_planes(double degrees, double dolp, std::uint16_t output_max, int side = 8) {
  kv::Planes planes;
  planes.width = side;
  planes.height = side;
  planes.levels(kv::Plane::azimuth)
      .assign(kv::pixel_count(side, side),
              static_cast<std::uint16_t>((degrees + 90) / 180 * output_max + 0.5));
  planes.levels(kv::Plane::dolp)
      .assign(kv::pixel_count(side, side), static_cast<std::uint16_t>(dolp * output_max + 0.5));
  return planes;
}

void expect_colour(const std::uint8_t* pixel, const kv::Colour& expected, const std::string& what) {
  for (std::size_t i = 0; i < 3; ++i) EXPECT_NEAR(pixel[i], expected[i], 1) << what << ", " << i;
}

TEST(AnglePicture, GoesOnceRoundTheHuesIn180Degrees) {
  const std::pair<double, kv::Colour> cases[] = {
      {0, {255, 0, 0}},    {30, {255, 255, 0}},  {45, {128, 255, 0}},  {60, {0, 255, 0}},
      {90, {0, 255, 255}}, {-90, {0, 255, 255}}, {-45, {128, 0, 255}}, {-60, {0, 0, 255}},
  };
  for (const std::uint16_t output_max : {std::uint16_t{65535}, std::uint16_t{4095}}) {
    for (const auto& [degrees, colour] : cases) {
      auto picture = kv::angle_picture(uniform_planes(degrees, 1, output_max), output_max, 1);
      expect_colour(picture.pixel(3, 5), colour, std::to_string(degrees) + " degrees");
    }
  }
}

TEST(AnglePicture, ValueIsDolpUpToItsWhite) {
  const auto red_at = [](double dolp, double white) {
    return kv::angle_picture(uniform_planes(0, dolp, 65535), 65535, white).bytes[0];
  };
  EXPECT_EQ(red_at(0, 1), 0);
  EXPECT_NEAR(red_at(0.4, 1), 102, 1);
  EXPECT_NEAR(red_at(0.4, 0.5), 204, 1);
  EXPECT_EQ(red_at(0.9, 0.5), 255);
}

TEST(AnglePicture, HasALegendWhoseColorsAreThoseOfThePicture) {
  constexpr int side = 1000;
  const auto planes = uniform_planes(45, 1, 65535, side);
  auto picture = kv::angle_picture(planes, 65535, 1);
  ASSERT_EQ(picture.width, side + kv::angle_legend_width(side));
  ASSERT_GT(picture.width, side);
  // The yellow-green of 45 degrees stands in the panel, right of and above the place of 225.
  const kv::Colour colour = {picture.bytes[0], picture.bytes[1], picture.bytes[2]};
  int rightmost = 0;
  int leftmost = picture.width;
  for (int row = 0; row < side; ++row) {
    for (int column = side; column < picture.width; ++column) {
      const std::uint8_t* pixel = picture.pixel(column, row);
      if (std::abs(pixel[0] - colour[0]) < 8 && pixel[1] > 245 && pixel[2] < 8) {
        rightmost = std::max(rightmost, column);
        leftmost = std::min(leftmost, column);
      }
    }
  }
  EXPECT_GT(rightmost - leftmost, 100) << "no wheel";
  EXPECT_EQ(kv::angle_legend_width(100), 0);
}

TEST(IntensityPicture, IsFreeOfTheMosaicAndStretched) {
  // Fully polarized light in the left half, half as bright unpolarized light in the right one.
  kv::Frame frame = kv::make_frame(64, 32, 12);
  for (std::size_t i = 0; i < frame.samples.size(); ++i) {
    const std::size_t row = i / 64;
    const std::size_t column = i % 64;
    const bool lit = row % 2 == 0 && column % 2 == 0;
    frame.samples[i] = static_cast<std::uint16_t>(column < 32 ? (lit ? 4000 : 0) : 500);
  }
  auto picture = kv::intensity_picture(frame);
  ASSERT_EQ(picture.width, 64);
  for (const int row : {0, 13, 31}) {
    for (const int column : {0, 7, 30}) EXPECT_EQ(picture.pixel(column, row)[0], 255);
    // Half of white in sRGB.
    for (const int column : {32, 41, 63}) EXPECT_NEAR(picture.pixel(column, row)[0], 188, 1);
  }
}

}  // namespace
