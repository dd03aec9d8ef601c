// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "kv/calibration/frame_corrector.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "error_of.h"
#include "test_calibration.h"

using namespace kv::polarization;

namespace {

constexpr int kWidth = 150;
constexpr int kHeight = 10;

/// A frame of uniform light, from that pixel of the calibrated region on.
Frame take(const Calibration& sensor, int column, int row, int width, int height,
           const TestLight& light) {
  Frame frame =
      make_frame(static_cast<unsigned>(width), static_cast<unsigned>(height), sensor.bit_depth);
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      frame.samples[pixel_count(width, y) + static_cast<std::size_t>(x)] =
          static_cast<std::uint16_t>(std::lround(reading(sensor, column + x, row + y, light)));
    }
  }
  return frame;
}

/// How far corrected samples are from those of ideal pixels, at most, in raw counts.
double greatest_error(const Frame& corrected, const Mosaic& mosaic, const TestLight& light,
                      const FrameCorrector& corrector) {
  double greatest = 0;
  const CellAngles angles = cell_angles(mosaic);
  for (int y = 0; y < corrected.height; ++y) {
    for (int x = 0; x < corrected.width; ++x) {
      const double turn = (light.angle - angles[static_cast<std::size_t>(y % 2 * 2 + x % 2)]) *
                          std::numbers::pi / 90;
      const double ideal = light.s0 / 2 * (1 + light.dolp * std::cos(turn));
      const double found = std::ldexp(
          corrected.samples[pixel_count(corrected.width, y) + static_cast<std::size_t>(x)],
          -corrector.gained_bits());
      greatest = std::max(greatest, std::abs(found - ideal));
    }
  }
  return greatest;
}

TEST(FrameCorrector, GivesTheSamplesOfAnIdealSensor) {
  struct Case {
    int x, y, width, height, bit_depth;
    PolarPhase phase;
    int least_gained_bits;
  };
  for (const auto& [x, y, width, height, bit_depth, phase, least_gained_bits] : {
           Case{0, 0, 150, 10, 12, kv_polar_phase_0, 3},
           Case{0, 0, 149, 9, 12, kv_polar_phase_45, 3},
           Case{1, 0, 67, 5, 12, kv_polar_phase_90, 3},
           Case{0, 1, 128, 4, 12, kv_polar_phase_135, 3},
           Case{3, 5, 64, 3, 10, kv_polar_phase_90, 5},
           Case{1, 1, 2, 2, 14, kv_polar_phase_135, 1},
           Case{84, 1, 66, 9, 16, kv_polar_phase_0, -1},
           Case{7, 0, 3, 3, 8, kv_polar_phase_45, 7},
       }) {
    SCOPED_TRACE(std::to_string(width) + " x " + std::to_string(height) + " from " +
                 std::to_string(x) + ", " + std::to_string(y));
    Calibration sensor = made_calibration(kWidth, kHeight, {phase, 5, 2}, bit_depth);
    const std::size_t outlier = pixel_count(kWidth, y + 1) + static_cast<std::size_t>(x + 1);
    sensor.maps.gain[outlier] *= 1.4f;
    const Mosaic mosaic = {phase, 5 + x, 2 + y};
    const TestLight light = {0.8 * full_scale(bit_depth), 0.7, 20.0 * bit_depth};
    FrameCorrector corrector(sensor, mosaic, width, height);
    Frame corrected;
    corrector.correct(take(sensor, x, y, width, height, light), corrected);
    // Half a count of each sample, with coefficients of 1.8 in all; twice that and a count of the
    // result where samples are halved.
    EXPECT_LT(greatest_error(corrected, mosaic, light, corrector), bit_depth < 16 ? 0.95 : 3);
    EXPECT_GE(corrector.gained_bits(), least_gained_bits);
    EXPECT_EQ(corrected.bit_depth, 16);
  }
}

TEST(FrameCorrector, CorrectsWithClassMeansWhereAllPixelsAreLikeTheirClass) {
  const Calibration sensor = made_calibration(kWidth, kHeight, {}, 12, 0);
  const TestLight light = {3000, 0.5, -30};
  FrameCorrector corrector(sensor, {}, kWidth, kHeight, {.per_cell = false});
  Frame corrected;
  corrector.correct(take(sensor, 0, 0, kWidth, kHeight, light), corrected);
  EXPECT_LT(greatest_error(corrected, {}, light, corrector), 0.95);
}

TEST(FrameCorrector, NeverOverflowsAndUsesTheRange) {
  for (const int bit_depth : {8, 12, 16}) {
    const Calibration sensor = made_calibration(kWidth, kHeight, {}, bit_depth);
    const auto greatest = static_cast<std::uint16_t>(full_scale(bit_depth) - 1);
    FrameCorrector corrector(sensor, {}, kWidth, kHeight);
    Frame frame = make_frame(kWidth, kHeight, bit_depth);
    std::vector<std::uint8_t> flags(frame.samples.size());
    Frame corrected;
    std::uint16_t most = 0;
    for (unsigned pattern = 0; pattern < 16; ++pattern) {
      for (std::size_t i = 0; i < frame.samples.size(); ++i) {
        const std::size_t place = i / kWidth % 2 * 2 + i % kWidth % 2;
        frame.samples[i] = (pattern >> place & 1u) != 0 ? greatest : 0;
      }
      corrector.correct(frame, corrected, flags);
      most = std::max(most, *std::max_element(corrected.samples.begin(), corrected.samples.end()));
      EXPECT_EQ(*std::max_element(flags.begin(), flags.end()), 0);
    }
    EXPECT_LT(most, 65534) << bit_depth;  // where it would be held
    EXPECT_GT(most, 32000) << bit_depth;
  }
}

TEST(FrameCorrector, SetsDefectsApart) {
  constexpr std::uint8_t kRescuedClip = quality::clipped | quality::rescued;
  struct Case {
    const char* name;
    std::vector<int> bad;      // places in the cell
    std::vector<int> clipped;  // likewise
    bool rescue;
    std::uint8_t flags;
  };
  const std::vector<Case> cases = {
      {"nothing", {}, {}, true, 0},
      {"one bad", {2}, {}, false, quality::rescued},
      {"the bad one is clipped", {2}, {2}, true, quality::rescued},
      {"one clipped", {}, {1}, false, quality::clipped},
      {"one clipped, rescued", {}, {1}, true, kRescuedClip},
      {"another one", {}, {3}, true, kRescuedClip},
      {"two clipped", {}, {0, 3}, true, quality::clipped},
      {"one bad, another clipped", {0}, {3}, true, quality::clipped | quality::bad_pixel},
      {"two bad", {0, 1}, {}, true, quality::bad_pixel}};
  const TestLight light = {2500, 0.6, 50};
  for (const int first_column : {10, 146}) {  // within a block, and in the rest of the row
    for (const auto& [name, bad, clipped, rescue, expected] : cases) {
      SCOPED_TRACE(name);
      Calibration sensor = made_calibration(kWidth, kHeight, {}, 12);
      Frame frame = take(sensor, 0, 0, kWidth, kHeight, light);
      const auto at = [&](int place) {
        return pixel_count(kWidth, 4 + place / 2) +
               static_cast<std::size_t>(first_column + place % 2);
      };
      for (const int place : bad) {
        sensor.maps.bad[at(place)] = bad_pixel::noisy;
        sensor.maps.gain[at(place)] = 0;
        frame.samples[at(place)] = 77;
      }
      for (const int place : clipped) frame.samples[at(place)] = 4095;
      FrameCorrector corrector(sensor, {}, kWidth, kHeight, {.rescue = rescue});
      Frame corrected;
      std::vector<std::uint8_t> flags(frame.samples.size(), 99);
      corrector.correct(frame, corrected, flags);
      const bool is_saturated = !quality::is_unusable(expected) ? false : clipped.size() != 0;
      for (int place = 0; place < 4; ++place) {
        EXPECT_EQ(int{flags[at(place)]}, expected);
        EXPECT_EQ(corrected.samples[at(place)] == 65535, is_saturated);
        flags[at(place)] = 0;
        if (!quality::is_unusable(expected)) continue;
        corrected.samples[at(place)] = static_cast<std::uint16_t>(std::lround(std::ldexp(
            light.s0 / 2 *
                (1 + light.dolp *
                         std::cos((light.angle -
                                   cell_angles(kv_polar_phase_0)[static_cast<std::size_t>(place)]) *
                                  std::numbers::pi / 90)),
            corrector.gained_bits())));
      }
      EXPECT_LT(greatest_error(corrected, {}, light, corrector), 1.5);
      EXPECT_EQ(*std::max_element(flags.begin(), flags.end()), 0) << "in another cell";
    }
  }
}

TEST(FrameCorrector, TellsMapsWhatTheyNeedToKnow) {
  const Calibration sensor = made_calibration(kWidth, kHeight, {}, 12);
  FrameCorrector corrector(sensor, {}, kWidth, kHeight, {.pedestal = 500});
  Frame corrected;
  corrector.correct(take(sensor, 0, 0, kWidth, kHeight, {0, 0, 0}), corrected);
  const SampleSettings samples = corrector.sample_settings();
  for (const std::uint16_t sample : corrected.samples) EXPECT_NEAR(sample, 500, 8);
  EXPECT_EQ(samples.black_level, 500);
  EXPECT_EQ(samples.clip_level, 65535);
  EXPECT_FLOAT_EQ(samples.noise->gain, 0.4f * 8);
}

TEST(FrameCorrector, MakesTheSameBytesOnSeveralThreads) {
  constexpr int side = 600;
  Calibration sensor = made_calibration(side, side, {}, 12);
  std::mt19937 random(3);
  Frame frame = make_frame(side, side - 1, 12);
  for (auto& sample : frame.samples) sample = static_cast<std::uint16_t>(random() % 4096);
  for (int i = 0; i < 500; ++i) sensor.maps.bad[random() % sensor.maps.bad.size()] = 1;
  std::vector<Frame> corrected(2);
  std::vector<std::vector<std::uint8_t>> flags(2, std::vector<std::uint8_t>(frame.samples.size()));
  for (const std::size_t i : {0u, 1u}) {
    FrameCorrector corrector(sensor, {}, side, side - 1,
                             {.rescue = true, .threads = i == 0 ? 1 : 3});
    corrector.correct(frame, corrected[i], flags[i]);
  }
  EXPECT_TRUE(corrected[0].samples == corrected[1].samples);
  EXPECT_EQ(flags[0], flags[1]);
}

TEST(FrameCorrector, RefusesWhatIsNotOfItsSensor) {
  const Calibration sensor = made_calibration(20, 10, {kv_polar_phase_90, 4, 4}, 12);
  struct Case {
    Mosaic mosaic;
    int width, height;
    const char* part;
  };
  for (const Case& refused :
       {Case{{kv_polar_phase_0, 4, 4}, 20, 10, "of phase 90, the frame of phase 0"},
        Case{{kv_polar_phase_90, 3, 4}, 10, 10, "from column 3, row 4"},
        Case{{kv_polar_phase_90, 5, 4}, 20, 10, "within the calibrated 20 x 10"},
        Case{{kv_polar_phase_90, 4, 4}, 20, 1, "2 x 2 or more"}}) {
    EXPECT_PRED2(contains, error_of([&] {
                   FrameCorrector(sensor, refused.mosaic, refused.width, refused.height);
                 }),
                 refused.part);
  }
  FrameCorrector corrector(sensor, {kv_polar_phase_90, 4, 4}, 20, 10);
  Frame frame = make_frame(20, 10, 10);
  Frame corrected;
  EXPECT_PRED2(contains, error_of([&] { corrector.correct(frame, corrected); }),
               "20 x 10 pixels of 12 bits");
  frame.bit_depth = 12;
  EXPECT_PRED2(contains, error_of([&] { corrector.correct(frame, frame); }), "overlaps");
}

}  // namespace
