// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "kv/pictures/pictures.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <set>

#include "error_of.h"
#include "kv/pictures/angle_ticks.h"
#include "kv/pictures/contact_sheet.h"
#include "kv/pictures/flags_picture.h"
#include "kv/pictures/picture_kinds.h"
#include "toolkit/pictures/glyphs.h"
#include "toolkit/pictures/panel.h"

using namespace kv::polarization;

namespace {

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();

/// Maps of one colour, whose pixels tests change.
struct TestMaps {
  TestMaps(int map_width, int map_height, double degrees = 0, double share = 0)
      : width(map_width),
        height(map_height),
        brightness(pixel_count(width, height), 40000),
        azimuth(brightness.size(), level((degrees + 90) / 180)),
        dolp(brightness.size(), level(share)),
        pairs(2 * brightness.size(), 0.0f) {}

  static std::uint16_t level(double share) {
    return static_cast<std::uint16_t>(std::lround(65535 * share));
  }
  operator PictureMaps() const { return {width, height, brightness, azimuth, dolp, pairs}; }

  int width, height;
  std::vector<std::uint16_t> brightness, azimuth, dolp;
  std::vector<float> pairs;
};

void expect_colour(Picture& picture, int column, int row, const Colour& expected,
                   int tolerance = 1) {
  for (int i = 0; i < picture.channels; ++i) {
    EXPECT_NEAR(picture.pixel(column, row)[i], expected[static_cast<std::size_t>(i)], tolerance)
        << "column " << column << ", row " << row << ", channel " << i;
  }
}

TEST(AnglePicture, ShowsTheAngleAsHueAndDolpUpToWhite) {
  constexpr AngleStyle kDark, kLight{HueCircle::hsv, Unpolarized::white}, kEven{HueCircle::even},
      kEvenLight{HueCircle::even, Unpolarized::white};
  const struct {
    AngleStyle style;
    double degrees, dolp, white;
    Colour colour;
  } cases[] = {
      {kDark, 0, 1, 1, {255, 0, 0}},
      {kDark, 30, 1, 1, {255, 255, 0}},
      {kDark, 45, 1, 1, {128, 255, 0}},
      {kDark, 90, 1, 1, {0, 255, 255}},
      {kDark, -90, 1, 1, {0, 255, 255}},
      {kDark, -45, 1, 1, {128, 0, 255}},
      {kDark, -60, 1, 1, {0, 0, 255}},
      {kDark, 0, 0, 1, {0, 0, 0}},
      {kDark, 0, 0.4, 1, {102, 0, 0}},
      {kDark, 60, 0.4, 0.5, {0, 204, 0}},
      {kDark, 0, 0.9, 0.5, {255, 0, 0}},
      {kLight, 45, 0, 1, {255, 255, 255}},
      {kLight, 0, 0.4, 1, {255, 153, 153}},
      {kLight, 60, 0.4, 0.5, {51, 255, 51}},
      {kLight, 90, 0.9, 0.5, {0, 255, 255}},
      // OKLCh of lightness 0.75, chroma 0.127 and hue 29.2 + 2 * angle, by another program.
      {kEven, 0, 1, 1, {244, 141, 126}},
      {kEven, 45, 1, 1, {165, 185, 87}},
      {kEven, 90, 1, 1, {20, 195, 217}},
      {kEven, -45, 1, 1, {185, 155, 243}},
      {kEven, 45, 0.2, 0.5, {66, 74, 35}},
      {kEvenLight, 45, 0.2, 0.5, {219, 227, 188}},
  };
  for (const auto& [style, degrees, dolp, white, colour] : cases) {
    SCOPED_TRACE(testing::Message() << degrees << " degrees, DoLP " << dolp << " of " << white);
    TestMaps maps(3, 2, degrees, dolp);
    maps.dolp.front() = 0;
    auto picture = angle_picture(maps, white, style);
    ASSERT_EQ(picture.bytes.size(), 18u);
    expect_colour(picture, 2, 1, colour);
    const bool is_light = style.unpolarized == Unpolarized::white;
    expect_colour(picture, 0, 0, is_light ? Colour{255, 255, 255} : Colour{0, 0, 0}, 0);
    auto grey = dolp_picture(maps, white);
    EXPECT_NEAR(grey.pixel(2, 1)[0], std::min(255.0, 255 * dolp / white), 1);
  }
}

TEST(RatioPicture, DivergesFromNeutralAndTakesNanForIt) {
  constexpr float kInfinity = std::numeric_limits<float>::infinity();
  constexpr Colour kNeutral = {242, 242, 242}, kRed = {187, 12, 7}, kBlue = {5, 89, 210};
  const std::pair<float, Colour> cases[] = {
      {0.0f, kNeutral},    {kNan, kNeutral},        {0.2f, kRed},
      {0.9f, kRed},        {kInfinity, kRed},       {-0.2f, kBlue},
      {-kInfinity, kBlue}, {0.1f, {224, 143, 131}}, {-0.1f, {131, 169, 231}}};
  for (const auto& [value, colour] : cases) {
    for (const std::size_t ratio : {0u, 1u}) {
      SCOPED_TRACE(testing::Message() << value << " of ratio " << ratio);
      TestMaps maps(2, 2);
      maps.pairs[6 + ratio] = value;
      auto picture = ratio_picture(maps, static_cast<StokesRatio>(ratio), 0.2);
      expect_colour(picture, 1, 1, colour);
      expect_colour(picture, 0, 1, kNeutral);
    }
  }
}

// 1000 pixels, of which that many are at the higher level: one in 100 may be.
TEST(Ranges, EndAtThe99thPercentileRoundedUp) {
  const struct {
    int level, higher_level, higher;
    double expected;
  } cases[] = {{0, 65535, 10, 0.05},     {0, 65535, 11, 1},     {13107, 13108, 10, 0.2},
               {13107, 13108, 11, 0.25}, {65535, 0, 0, 1},      {3276, 3277, 11, 0.05},
               {29491, 65535, 3, 0.45},  {29492, 65535, 3, 0.5}};
  for (const auto& [level, higher_level, higher, expected] : cases) {
    TestMaps maps(50, 20);
    for (std::size_t i = 0; i < 1000; ++i) {
      const int value = i < static_cast<std::size_t>(higher) ? higher_level : level;
      maps.dolp[i] = static_cast<std::uint16_t>(value);
      // Both ratios count, and their signs do not; the pair of a black pixel does not.
      maps.pairs[2 * i] = static_cast<float>(value) / -65535.0f;
      maps.pairs[2 * i + 1] = static_cast<float>(value) / 65535.0f;
    }
    const PictureRanges ranges = ranges_of(maps);
    EXPECT_EQ(ranges.dolp_white, expected) << level;
    EXPECT_EQ(ranges.ratio_limit, expected) << level;
  }
  TestMaps black(10, 10);
  std::fill(black.pairs.begin() + 2, black.pairs.end(), kNan);
  black.pairs[1] = 0.5f;
  EXPECT_EQ(ratio_limit_of(black), 0.5);
}

TEST(PictureSource, ComputesMapsAtFullScale) {
  // I0 | I135 over I45 | I90 in every cell: S0 = 30, S1 = 20 - 10, S2 = 0, of 6 bits.
  Frame frame = make_frame(4, 4, 6);
  for (std::size_t i = 0; i < 16; ++i) {
    frame.samples[i] = i % 2 == 0 ? (i / 4 % 2 == 0 ? 20 : 15) : (i / 4 % 2 == 0 ? 15 : 10);
  }
  Processor processor;
  PictureSource source;
  source.fill(processor, frame, {});
  const PictureMaps maps = source.maps();
  for (const std::size_t pixel : {0u, 15u}) {
    EXPECT_EQ(maps.brightness[pixel], 15604);  // 60 / 252 of 65535, rounded
    EXPECT_NEAR(maps.azimuth[pixel], 32767.5, 1);
    EXPECT_NEAR(maps.dolp[pixel], 21845, 10);  // a third, by the library's reciprocal
    EXPECT_NEAR(maps.normalized_stokes[2 * pixel], 1.0 / 3, 1e-3);
  }
  source.fill(processor, frame, {}, OutputSet{Plane::dolp});
  EXPECT_TRUE(source.maps().azimuth.empty());
}

TEST(PictureSource, RefusesFramesWithoutCellsWhateverIsWanted) {
  Processor processor;
  PictureSource source;
  for (const auto& [width, height] : {std::pair{1u, 4u}, {4u, 1u}, {3u, 3u}}) {
    EXPECT_THROW(source.fill(processor, make_frame(width, height, 8), {}, {}), Fault);
  }
}

TEST(PictureSource, MakesNeutralPicturesOfBlackFrames) {
  Processor processor;
  PictureSource source;
  source.fill(processor, make_frame(16, 8, 12), {});
  const PictureMaps maps = source.maps();
  const PictureRanges ranges = ranges_of(maps);
  EXPECT_EQ(ranges.dolp_white, 0.05);
  EXPECT_EQ(ranges.ratio_limit, 0.05);
  for (const auto& [kind, level] : {std::pair{PictureKind::intensity, 0},
                                    {PictureKind::dolp, 0},
                                    {PictureKind::angle, 0},
                                    {PictureKind::angle_even_light, 255},
                                    {PictureKind::s1_ratio, 242},
                                    {PictureKind::s2_ratio, 242},
                                    {PictureKind::angle_ticks, 0}}) {
    for (const int byte : picture_of(kind, maps, ranges).bytes) {
      ASSERT_EQ(byte, level) << traits_of(kind).name;
    }
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
  Processor processor;
  PictureSource source;
  source.fill(processor, frame, {}, {});
  auto picture = intensity_picture(source.maps());
  ASSERT_EQ(picture.bytes.size(), 64u * 32u);
  for (const int row : {0, 13, 31}) {
    for (const int column : {0, 7, 30}) EXPECT_EQ(picture.pixel(column, row)[0], 255);
    // Half of white in sRGB.
    for (const int column : {32, 41, 63}) EXPECT_NEAR(picture.pixel(column, row)[0], 188, 1);
  }
  EXPECT_EQ(picture.pixel(49, 9)[0], 255);
}

// Four cells of 24 x 24: ticks are up to 24 - 4 - 1 long, and 2 wide.
TEST(AngleTicks, ShowMeansOfStokesValues) {
  TestMaps maps(48, 48);
  for (std::size_t i = 0; i < maps.brightness.size(); ++i) {
    const bool right = i % 48 >= 24;
    const bool lower = i / 48 >= 24;
    float* pair = &maps.pairs[2 * i];
    if (!right && !lower) {  // about 88 and -88 degrees, whose mean is not 0
      pair[0] = -0.5f;
      pair[1] = i % 2 == 0 ? 0.07f : -0.07f;
    } else if (right && !lower) {  // bright and at 45 degrees, dark and at 135; some without light
      pair[1] = i % 2 == 0 ? 1.0f : -1.0f;
      maps.brightness[i] = i % 2 == 0 ? 40000 : 4000;
      if (i % 8 == 4) pair[0] = pair[1] = kNan;
    } else if (lower && !right) {
      maps.brightness[i] = 0;
    }
  }
  auto picture = angle_ticks_picture(maps, 0.5, 24);
  constexpr Colour kTick = {255, 200, 0};
  for (const int reach : {-6, 0, 5}) {
    expect_colour(picture, 12, 12 + reach, kTick, 40);
    expect_colour(picture, 36 + reach, 11 - reach, kTick, 40);
  }
  for (const int reach : {-6, 6}) {
    expect_colour(picture, 12 + reach, 12, {255, 255, 255}, 0);
    expect_colour(picture, 36 + reach, 12 + reach, {255, 255, 255}, 0);
    expect_colour(picture, 36 + reach, 36, {255, 255, 255}, 0);
  }
  expect_colour(picture, 12, 36, {0, 0, 0}, 0);
  expect_colour(picture, 36, 36, kTick, 60);  // a dot: unpolarized
}

TEST(FlagsPicture, ShowsTheFirstFlagOfTheTableAndCountsAll) {
  constexpr Colour kRed = {255, 0, 0}, kBlue = {0, 0, 255};
  const FlagStyle table[] = {{4, "saturated", kRed}, {1, "dark", kBlue}, {8, "hot", {0, 255, 0}}};
  const TestMaps maps(100, 300);
  std::vector<std::uint8_t> flags(30000);
  std::fill_n(flags.begin(), 3000, std::uint8_t{4});
  std::fill_n(flags.begin(), 300, std::uint8_t{4 + 1 + 32});
  flags[3000] = 1;
  flags[3001] = 32;  // not in the table
  auto picture = with_legend(flags_picture(maps, flags, table), flags_legend(flags, table));
  ASSERT_EQ(picture.width, 218);
  expect_colour(picture, 0, 0, kRed, 0);
  expect_colour(picture, 99, 29, kRed, 0);
  expect_colour(picture, 0, 30, kBlue, 0);
  expect_colour(picture, 1, 30, {127, 127, 127}, 0);
  // A line of title ends at 19, and each of the first two swatches has two lines and 2 rows below.
  expect_colour(picture, 108, 24, kRed, 0);
  expect_colour(picture, 116, 32, kRed, 0);
  expect_colour(picture, 117, 33, kPanelColour, 0);
  expect_colour(picture, 108, 48, kBlue, 0);
  const auto legend = flags_legend(flags, table);
  const Swatches& swatches = std::get<Swatches>(legend.scale);
  EXPECT_EQ(swatches[0].text, "saturated 10.00%");
  EXPECT_EQ(swatches[1].text, "dark 1.00%");
  EXPECT_EQ(swatches[2].text, "hot 0.00%");
  EXPECT_EQ(std::get<Swatches>(flags_legend({flags.data() + 299, 29701}, table).scale)[1].text,
            "dark <0.01%");
}

/// Pixels of the text's colour within a box of that many pixels to each side.
int bright_pixels(Picture& picture, int column, int row, int reach) {
  int count = 0;
  for (int r = row - reach; r <= row + reach; ++r) {
    for (int c = column - reach; c <= column + reach; ++c) {
      if (picture.pixel(c, r)[0] == 230 && picture.pixel(c, r)[picture.channels - 1] == 230)
        ++count;
    }
  }
  return count;
}

// A picture of 1000 rows has dots of 2 x 2 pixels. The wheel's centre is (118, 164) in the panel,
// its radius 64.
TEST(Legend, OfAnglesHasHuesAndLabelsAtTheirAngles) {
  const TestMaps maps(100, 1000, 45, 1);
  auto picture = picture_of(PictureKind::angle, maps, {.dolp_white = 0.5});
  ASSERT_EQ(picture.width, 336);
  expect_colour(picture, 99, 164, {128, 255, 0});
  expect_colour(picture, 100, 0, kPanelColour, 0);
  constexpr int column = 100 + 118;
  constexpr int row = 164;
  expect_colour(picture, column, row, {0, 0, 0});
  expect_colour(picture, column + 32, row, {128, 0, 0});
  expect_colour(picture, column - 32, row, {128, 0, 0});
  expect_colour(picture, column, row - 32, {0, 128, 128});
  expect_colour(picture, column + 32, row - 32, {90, 180, 0});  // 45.3 of 64 from the centre
  expect_colour(picture, column - 32, row - 32, {90, 0, 180});
  expect_colour(picture, column, row + 66, kPanelColour);
  // Labels are 6 pixels and half of their size from the rim; dots as drawn in glyph_table.h.
  EXPECT_EQ(bright_pixels(picture, column + 81, row, 12), 4 * (19 + 8)) << "0";
  EXPECT_EQ(bright_pixels(picture, column + 62, row - 62, 18), 4 * (14 + 17 + 8)) << "45";
  EXPECT_EQ(bright_pixels(picture, column, row - 77, 17), 4 * (16 + 19 + 8)) << "90";
  EXPECT_EQ(bright_pixels(picture, column - 64, row - 64, 24), 4 * (10 + 14 + 17 + 8)) << "135";
  EXPECT_EQ(angle_legend(0.35).notes.back(), "brightness: DoLP 0 to 0.35");
}

// The title takes two lines of 11 rows below a margin of 8, then comes a gap of 6.
TEST(Legend, OfValuesHasABarWithMarks) {
  const TestMaps maps(10, 480);
  auto picture = picture_of(PictureKind::dolp, maps, {.dolp_white = 0.5});
  ASSERT_EQ(picture.width, 128);
  for (const auto& [row, level] : {std::pair{38, 32}, {39, 255}, {88, 128}, {138, 0}, {139, 32}}) {
    EXPECT_NEAR(picture.pixel(18, row)[0], level, 1) << row;
    EXPECT_NEAR(picture.pixel(33, row)[0], level, 1) << row;
  }
  EXPECT_EQ(bright_pixels(picture, 49, 39, 9), 19 + 4 + 17) << "0.5";
  EXPECT_EQ(bright_pixels(picture, 52, 89, 12), 19 + 4 + 14 + 17) << "0.25";
  EXPECT_EQ(bright_pixels(picture, 43, 139, 3), 19) << "0";
  EXPECT_EQ(std::get<ScaleBar>(ratio_legend(StokesRatio::s2, 0.35).scale).marks,
            (std::array<std::string, 3>{"-0.35", "0", "0.35"}));
  EXPECT_EQ(std::get<ScaleBar>(intensity_legend(maps).scale).marks[2], "61%");  // 40000 of 65535
}

TEST(Legend, IsLeftOutWhereItCannotBeRead) {
  for (const auto& [height, width] :
       {std::pair{1, 0}, {190, 0}, {191, 118}, {959, 118}, {960, 236}}) {
    EXPECT_EQ(legend_width(angle_legend(0.5), height), width) << height;
  }
  for (const auto& [width, height] : {std::pair{2, 2}, {3, 2}, {2, 700}, {700, 2}, {13, 11}}) {
    const TestMaps maps(width, height, 20, 0.5);
    for (const PictureTraits& traits : kPictureKinds) {
      SCOPED_TRACE(testing::Message() << traits.name << ", " << width << " x " << height);
      const Picture picture = picture_of(traits.kind, maps, {});
      if (traits.kind == PictureKind::contact_sheet) continue;
      EXPECT_EQ(picture.width, width + (height == 700 ? 118 : 0));
      EXPECT_EQ(picture.height, height);
    }
  }
}

TEST(ContactSheet, PlacesReducedPicturesUnderTitles) {
  ContactSheet sheet;
  Picture stripes(1300, 6, 1);  // reduced by 3: columns 2, 5, ... are white
  for (std::size_t i = 2; i < stripes.bytes.size(); ++i)
    stripes.bytes[i] = i % 1300 % 3 == 2 ? 255 : 0;
  for (int i = 0; i < 4; ++i) sheet.add(stripes, {.title = "I", .scale = {}, .notes = {}});
  auto picture = sheet.picture();
  // 433 x 2 pixels below 10 rows of title, 12 pixels apart.
  ASSERT_EQ(picture.width, 3 * 445 + 12);
  ASSERT_EQ(picture.height, 2 * 24 + 12);
  for (const auto& [left, top] : {std::pair{12, 12}, {457, 12}, {902, 12}, {12, 36}}) {
    EXPECT_EQ(picture.pixel(left + 2, top)[0], 230);
    for (const int right : {0, 432})
      expect_colour(picture, left + right, top + 11, {85, 85, 85}, 0);
    expect_colour(picture, left + 433, top + 11, {16, 16, 16}, 0);
  }
  EXPECT_PRED2(contains, error_of([] { ContactSheet().picture(); }), "no pictures");
}

TEST(Glyphs, DifferAndStayInTheirLine) {
  std::set<std::vector<std::uint8_t>> pictures;
  for (char sign = ' '; sign <= '~'; ++sign) {
    Picture picture(7, 11, 1);
    draw_text(picture, std::string(1, sign), 1, 1, 1, {255, 255, 255});
    EXPECT_TRUE(pictures.insert(picture.bytes).second) << sign;
    for (int row = 0; row < 11; ++row) {
      EXPECT_EQ(picture.pixel(0, row)[0] + picture.pixel(6, row)[0], 0) << sign;
    }
  }
  EXPECT_EQ(text_width("45\xC2\xB0", 2), 34);
  EXPECT_EQ(wrapped("a word of twenty-and-some signs", 9),
            (std::vector<std::string>{"a word of", "twenty-an", "d-some", "signs"}));
}

TEST(Pictures, RefuseMissingMapsAndBadRanges) {
  const TestMaps maps(4, 4);
  PictureMaps taller = maps;
  taller.height = 5;
  for (const PictureTraits& traits : kPictureKinds) {
    for (const double end : {0.0, -0.5, 1.01, static_cast<double>(kNan)}) {
      const auto draw = [&] { picture_of(traits.kind, maps, {end, end}); };
      const bool has_range = traits.kind != PictureKind::intensity;
      EXPECT_EQ(contains(error_of(draw), "above 0, up to 1"), has_range) << traits.name << end;
    }
    EXPECT_PRED2(contains, error_of([&] { picture_of(traits.kind, taller, {}); }), "4 x 5 pixels");
  }
  EXPECT_PRED2(contains, error_of([&] { flags_picture(maps, {}, {}); }), "the map flags");
  EXPECT_PRED2(contains, error_of([&] { angle_ticks_picture(maps, 1, 0); }), "at least 1 pixel");
}

}  // namespace
