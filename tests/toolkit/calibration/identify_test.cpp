// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "kv/calibration/identify.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <random>
#include <string>

#include "error_of.h"

using namespace kv::polarization;

namespace {

constexpr int kSide = 40;

struct Film {
  Mosaic mosaic;
  double angle = 0;
  double dolp = 0.8;
  double level = 1500;  ///< S0
  bool mirrored = false;
};

/// A film, with noise of some 2 per cent; a mirrored frame is turned over, left to right.
Frame photograph(const Film& film) {
  static std::mt19937 random(5);
  Frame frame = make_frame(kSide, kSide, 12);
  const CellAngles angles = cell_angles(film.mosaic);
  for (int row = 0; row < kSide; ++row) {
    for (int column = 0; column < kSide; ++column) {
      const int angle = angles[static_cast<std::size_t>(row % 2 * 2 + column % 2)];
      const double light =
          film.level / 2 * (1 + film.dolp * std::cos((film.angle - angle) * std::numbers::pi / 90));
      const int x = film.mirrored ? kSide - 1 - column : column;
      const double noisy = light + static_cast<double>(random() % 51) - 25;
      frame.samples[pixel_count(kSide, row) + static_cast<std::size_t>(x)] =
          static_cast<std::uint16_t>(std::clamp(std::lround(noisy), 0l, 4095l));
    }
  }
  return frame;
}

Film turned(Film film, double turn) {
  film.angle += turn;
  return film;
}

// The phase that a frame of each phase has when it is turned over: that of its top right pixel.
constexpr PolarPhase kTurnedOver[] = {kv_polar_phase_135, kv_polar_phase_90, kv_polar_phase_45,
                                      kv_polar_phase_0};

TEST(IdentifyMosaic, TellsAllEightByAKnownTurnAndAngle) {
  for (int phase = 0; phase < 4; ++phase) {
    for (const bool mirrored : {false, true}) {
      for (const double turn : {30.0, -50.0, 130.0}) {
        for (const int origin : {0, 1, 6}) {
          SCOPED_TRACE(std::to_string(phase) + (mirrored ? " mirrored, " : ", ") +
                       std::to_string(turn) + ", " + std::to_string(origin));
          // A frame turned over begins at the sensor's last column: an even one is taken for it.
          const Mosaic mosaic{phase, mirrored ? 0 : origin, 1};
          const Film film{.mosaic = mosaic, .angle = 10, .mirrored = mirrored};
          const double sense = mirrored ? -1 : 1;
          const MosaicIdentity found =
              identify_mosaic(photograph(film), photograph(turned(film, sense * turn)),
                              {.turn = turn,
                               .angle_of_first = sense * 10,
                               .x_origin = mosaic.x_origin,
                               .y_origin = 1});
          ASSERT_TRUE(found.is_told) << found.verdict;
          EXPECT_EQ(found.candidates[0].phase, mirrored ? kTurnedOver[phase] : phase);
          EXPECT_EQ(found.candidates[0].mirrored, mirrored);
          EXPECT_EQ(found.candidates.size(), 8u);
        }
      }
    }
  }
}

TEST(IdentifyMosaic, TellsNoMoreThanThereIsToTell) {
  constexpr double kUnknown = 999;
  struct Case {
    const char* name;
    Film film;
    double turn;       // as it was
    double told_turn;  // as it is told
    double told_angle;
    bool may_be_mirrored;
    int left;     // candidates of more than a per cent
    double most;  // confidence of the first
    const char* verdict;
  };
  const Film film{.mosaic = {kv_polar_phase_45, 0, 0}, .angle = 0};
  Film weak = film, dark = film, clipped = film, between = film;
  weak.dolp = 0.02;
  dark.level = 0;
  clipped.level = 20000;
  between.angle = 22.5;
  for (const auto& [name, light, turn, told_turn, told_angle, may_be_mirrored, left, most,
                    verdict] :
       {Case{"turn alone", film, 45, 45, kUnknown, true, 4, 0.25,
             "angle of the light in the first"},
        Case{"turn alone, not mirrored", film, 45, 45, kUnknown, false, 2, 0.5, "45; phase 135"},
        Case{"other sense, not mirrored", film, 45, -45, kUnknown, false, 2, 0.5, "0; phase 90"},
        Case{"turn of 90", film, 90, 90, 0, true, 2, 0.5, "A turn near 45"},
        Case{"turn of 90 alone", film, 90, 90, kUnknown, true, 8, 0.125, "A turn near 45"},
        Case{"turn of 90, not mirrored", film, 90, 90, 0, false, 1, 1, "is of phase 45"},
        Case{"angle alone, of 22.5", between, 0, 0, 22.5, true, 2, 0.5, "A turn near 45"},
        Case{"wrong turn", film, 45, 20, 0, true, 8, 0.125, "a turn of 20.0 from"},
        Case{"wrong angle", film, 45, 45, 22.5, true, 8, 0.125, "an angle of 22.5"},
        Case{"weak", weak, 45, 45, 0, true, 8, 0.125, "DoLP of"},
        Case{"dark", dark, 45, 45, 0, true, 8, 0.125, "per cent only"},
        Case{"clipped", clipped, 45, 45, 0, true, 8, 0.125, "neither dark nor clipped"}}) {
    TurnedLight known{.turn = told_turn, .may_be_mirrored = may_be_mirrored};
    if (told_angle != kUnknown) known.angle_of_first = told_angle;
    const MosaicIdentity found =
        identify_mosaic(photograph(light), photograph(turned(light, turn)), known);
    EXPECT_EQ(std::count_if(found.candidates.begin(), found.candidates.end(),
                            [](const auto& one) { return one.confidence > 0.01; }),
              left)
        << name;
    EXPECT_NEAR(found.candidates[0].confidence, most, 0.06) << name;
    EXPECT_EQ(found.is_told, left == 1) << name;
    EXPECT_PRED2(contains, found.verdict, verdict) << name;
  }
}

TEST(IdentifyMosaic, LooksAtTheRegionAlone) {
  const Film film{.mosaic = {kv_polar_phase_90, 0, 0}, .angle = 20};
  const Film around{.mosaic = film.mosaic, .dolp = 0, .level = 3000};
  Frame first = photograph(around);
  Frame second = first;
  const Frame film_first = photograph(film);
  const Frame film_second = photograph(turned(film, 45));
  for (int row = 11; row < 30; ++row) {
    const auto begin = static_cast<std::ptrdiff_t>(pixel_count(kSide, row) + 7);
    std::copy_n(film_first.samples.begin() + begin, 20, first.samples.begin() + begin);
    std::copy_n(film_second.samples.begin() + begin, 20, second.samples.begin() + begin);
  }
  TurnedLight known{.turn = 45, .angle_of_first = 20};
  known.region = Rectangle{7, 11, 20, 19};
  const MosaicIdentity found = identify_mosaic(first, second, known);
  ASSERT_TRUE(found.is_told) << found.verdict;
  EXPECT_EQ(found.candidates[0].phase, kv_polar_phase_90);
  EXPECT_NEAR(found.dolp[0], 0.8, 0.01);
  // In phase 90 too, the top right polarizer is 45 degrees back.
  EXPECT_NEAR(found.turn, 45, 1);
  // Noise of 51 levels has a variance of 217, the differences 434 each; 90 cells of S0 1500.
  EXPECT_NEAR(found.angle_sigma[0], std::sqrt(434 / 90.0) / 1200 * 28.65, 0.02);
  known.region = Rectangle{39, 0, 2, 2};
  EXPECT_PRED2(contains, error_of([&] { identify_mosaic(first, second, known); }), "within");
  known.region = Rectangle{7, 7, 2, 2};
  EXPECT_PRED2(contains, error_of([&] { identify_mosaic(first, second, known); }), "even column");
}

}  // namespace
