// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "kv/polarization/region.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>
#include <utility>
#include <vector>

#include "error_of.h"
#include "kv/polarization/mean_plane.h"
#include "toolkit/simulation/mosaic_camera.h"

using namespace kv::polarization;

namespace {

// 4 x 2 pixels of phase 0: I0, I135 over I45, I90. The cells' light is at 83 and -83 degrees.
Frame two_cells() {
  Frame frame = make_frame(4, 2, 12);
  std::ranges::copy(std::to_array<std::uint16_t>({100, 400, 100, 600, 600, 900, 400, 900}),
                    frame.samples.begin());
  return frame;
}

// The mean of the angles would be 0, across the light.
TEST(Region, AddsUpStokesValuesBeforeAngles) {
  const SampleSettings settings{.noise = SensorNoise{1, 0}};
  const RegionStatistics both = region_statistics(two_cells(), {}, settings, {0, 0, 4, 2});
  EXPECT_EQ(both.cells, 2);
  EXPECT_EQ(both.s0, 1000);
  EXPECT_EQ(both.s1, -800);
  EXPECT_EQ(both.s2, 0);
  EXPECT_EQ(both.dolp, 0.8);
  EXPECT_EQ(both.angle, 90);
  // The variances of the eight samples are their counts and 1/12.
  EXPECT_NEAR(both.s0_sigma, std::sqrt((4000 + 8.0 / 12) / 4) / 2, 1e-6);
  EXPECT_NEAR(both.s1_sigma, std::sqrt(2000 + 4.0 / 12) / 2, 1e-6);
  EXPECT_NEAR(both.s2_sigma, std::sqrt(2000 + 4.0 / 12) / 2, 1e-6);
  EXPECT_NEAR(both.angle_sigma, both.s2_sigma / 800 * 90 / std::numbers::pi, 1e-6);
  // From the odd column on there is one cell, which begins at 135 degrees: the same light.
  const RegionStatistics middle = region_statistics(two_cells(), {}, settings, {1, 0, 3, 2});
  EXPECT_EQ(middle.cells, 1);
  EXPECT_EQ(middle.s1, 100 - 900);
  EXPECT_EQ(middle.s2, 400 - 400);
}

TEST(Region, LeavesOutWhatTellsNothing) {
  struct Case {
    const char* name;
    std::size_t bad_place;
    std::uint16_t clip_level;
    bool rescue;
    std::array<std::size_t, 5> counts;  // cells, left out, clipped, rescued, bad
    double s2;
  };
  const Case cases[] = {{"all", 9, 4095, true, {2, 0, 0, 0, 0}, 0},
                        {"bad", 3, 4095, true, {1, 1, 0, 0, 1}, 200},
                        {"clipped", 9, 900, false, {0, 2, 2, 0, 0}, std::nan("")},
                        {"rescued", 9, 900, true, {2, 0, 2, 2, 0}, 0},
                        {"bad and clipped", 0, 900, true, {1, 1, 2, 1, 1}, -200}};
  for (const auto& [name, bad_place, clip_level, rescue, counts, s2] : cases) {
    // The frame is of the sensor's rows 2 and 3.
    std::vector<std::uint8_t> bad(18);
    bad[8 + bad_place] = 1;
    const SampleSettings settings{
        .clip_level = clip_level, .rescue = rescue, .bad_pixels = {bad, 4, 4}};
    const RegionStatistics all =
        region_statistics(two_cells(), {.y_origin = 2}, settings, {0, 0, 4, 2});
    EXPECT_EQ(counts, (std::array{all.cells, all.left_out, all.clipped, all.rescued, all.bad}))
        << name;
    EXPECT_TRUE(all.s2 == s2 || (std::isnan(s2) && std::isnan(all.s2))) << name;
    EXPECT_TRUE(std::isnan(all.dolp_sigma)) << name << ": no noise was told";
  }
}

// 900 regions of 5 x 5 cells tell a standard deviation to 2.4 per cent. Counting every pixel of a
// region would predict half.
TEST(Region, PredictsTheNoiseOfItsMean) {
  const LightField light = [](double, double) { return Stokes{0.1, 0.03, 0.02}; };
  const Frame frame = photograph(light, 300, 300, {.bit_depth = 12, .seed = 5});
  const SampleSettings settings{.noise = SensorNoise{0.39f, 2.5f}};
  double dolp = 0, squares = 0, angle_squares = 0, dolp_variance = 0, angle_variance = 0;
  const double true_angle = std::atan2(0.02, 0.03) * 90 / std::numbers::pi;
  std::vector<std::uint8_t> mask(300 * 300);
  for (int row = 0; row < 300; row += 10) {
    for (int column = 0; column < 300; column += 10) {
      const auto region = region_statistics(frame, {}, settings, {column, row, 10, 10});
      EXPECT_EQ(region.cells, 25);
      dolp += region.dolp / 900;
      squares += region.dolp * region.dolp / 900;
      angle_squares += (region.angle - true_angle) * (region.angle - true_angle) / 900;
      dolp_variance += region.dolp_sigma * region.dolp_sigma / 900;
      angle_variance += region.angle_sigma * region.angle_sigma / 900;
    }
  }
  EXPECT_NEAR(std::sqrt(dolp_variance / (squares - dolp * dolp)), 1, 0.07);
  EXPECT_NEAR(std::sqrt(angle_variance / angle_squares), 1, 0.07);
  for (const Rectangle& odd : {Rectangle{0, 1, 60, 60}, {1, 1, 60, 60}}) {
    EXPECT_NEAR(region_statistics(frame, {}, settings, odd).angle, true_angle, 1);
  }
  // A mask of the same cells is the same region; a cell with a pixel outside is not in it.
  for (std::size_t i = 0; i < 100; ++i) mask[(20 + i / 10) * 300 + 30 + i % 10] = 1;
  mask[20 * 300 + 40] = 1;
  const auto by_mask = region_statistics(frame, {}, settings, mask);
  const auto by_rectangle = region_statistics(frame, {}, settings, {30, 20, 10, 10});
  EXPECT_EQ(by_mask.cells, 25);
  EXPECT_EQ(by_mask.angle, by_rectangle.angle);
  EXPECT_EQ(by_mask.dolp_sigma, by_rectangle.dolp_sigma);
}

TEST(Region, RefusesWhatIsNotWithinTheFrame) {
  for (const Rectangle& region :
       {Rectangle{-1, 0, 2, 2}, {3, 0, 2, 2}, {0, 0, 2, 3}, {0, 0, 1, 2}, {2, 0, 0x7fffffff, 2}}) {
    EXPECT_PRED2(contains, error_of([&] { region_statistics(two_cells(), {}, {}, region); }),
                 "is not within the frame's 4 x 2");
  }
}

// Means of four, with the column at the right edge like the one before it, the last row like the
// one above it.
TEST(MeanPlane, NeverClipsWhereIntensityDoes) {
  Frame frame = make_frame(3, 3, 12);
  std::ranges::copy(std::to_array<std::uint16_t>({4095, 4095, 0, 4095, 4095, 1, 0, 1, 1}),
                    frame.samples.begin());
  Buffer<std::uint16_t> mean(9);
  fill_mean_plane(frame, mean);
  EXPECT_EQ(mean, (Buffer<std::uint16_t>{4095, 2048, 2048, 2048, 1025, 1025, 2048, 1025, 1025}));
  // S0, twice the mean before rounding: 8190, 4095.5 twice, and 4096 twice are above 4095.
  EXPECT_EQ(count_clipped_intensity(frame), 5);
  frame.samples[8] = 0;
  frame.samples[5] = 0;
  EXPECT_EQ(count_clipped_intensity(frame), 3) << "S0 of just 4095 does not clip";
  EXPECT_PRED2(contains, error_of([&] { fill_mean_plane(frame, std::span(mean).first(8)); }),
               "room for 8");
}

}  // namespace
