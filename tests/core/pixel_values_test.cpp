// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

// Values worked by hand. They come from the top-left pixel of a 2 x 2 frame behind the 0 degree
// polarizer, whose default weights give S0 = (own + horizontal + vertical + diagonal) / 2,
// S1 = own - diagonal and S2 = vertical - horizontal.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "public_call.h"
#include "rounding_scope.h"

namespace kv::test {
namespace {

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr float kDenormal = 1e-40f;

struct Samples {
  std::uint16_t own, horizontal, vertical, diagonal;
};

constexpr Samples uniform(std::uint16_t value) { return {value, value, value, value}; }

struct Scale {
  std::uint32_t bit_depth = 16;
  std::uint16_t output_max = 65535;
};

/// The planes of the whole frame; each test looks at pixel 0.
Planes evaluate(const Samples& samples, const Scale& scale = {}, const Weights* weights = nullptr) {
  const Processor processor;
  if (weights != nullptr) {
    EXPECT_EQ(kv_polarization_processor_set_custom_calibration_coefficients(
                  processor.handle(), weights->data(), nullptr, nullptr, nullptr),
              kv_status_ok);
  }
  return transformed(processor, {.bit_depth = scale.bit_depth, .output_max = scale.output_max},
                     {samples.own, samples.horizontal, samples.vertical, samples.diagonal});
}

/// intensity, stokes_s1, stokes_s2, azimuth, dolp.
using Levels = std::array<int, 5>;

Levels levels_of(const Planes& planes) {
  Levels levels{};
  for (std::size_t i = 0; i < levels.size(); ++i) levels[i] = planes.level(kPlanes[i + 1].plane, 0);
  return levels;
}

/// Any Stokes values, by way of the weights.
struct Stokes {
  float s0, s1, s2;
};

Planes evaluate(const Stokes& stokes) {
  Weights weights{};
  const auto make_row = [&weights](std::size_t row, float value) {
    weights[4 * row] = value;
    // A sum of zeros is negative only if all of them are.
    for (std::size_t i = 1; i < 4; ++i) weights[4 * row + i] = std::copysign(0.0f, value);
  };
  make_row(0, 2 * stokes.s0);
  make_row(1, stokes.s1);
  make_row(2, stokes.s2);
  return evaluate(Samples{1, 0, 0, 0}, {}, &weights);
}

TEST(PixelValues, AzimuthAndDolp) {
  struct Level {
    int value;
    int tolerance = 0;  ///< What the approximate reciprocals may move.
  };
  struct Case {
    const char* name;
    Samples samples;
    std::uint16_t output_max;
    Level azimuth, dolp;
  };
  const std::vector<Case> cases{
      {"black", {0, 0, 0, 0}, 65535, {32768}, {0}},
      {"black of 10 bits", {0, 0, 0, 0}, 1023, {512}, {0}},
      {"0 degrees", {1000, 600, 600, 200}, 65535, {32768}, {43690, 16}},
      {"90 degrees", {200, 600, 600, 1000}, 65535, {65535}, {43690, 16}},
      {"45 degrees", {600, 200, 1000, 600}, 65535, {49151}, {43690, 16}},
      {"45 degrees of 12 bits", {600, 200, 1000, 600}, 4095, {3071}, {2730, 1}},
      {"-45 degrees", {600, 1000, 200, 600}, 65535, {16384}, {43690, 16}},
      {"-9 degrees", {1000, 700, 400, 100}, 65535, {29461, 4}, {56520, 24}},
      {"8 degrees", {800, 300, 500, 100}, 65535, {35619, 4}, {56130, 24}},
      {"|S1| = |S2|, the arc around S2", {300, 500, 900, 700}, 65535, {57291, 4}, {30893, 12}},
      {"the length exceeds S0", {100, 0, 100, 0}, 65535, {41011, 4}, {65535}},
      {"one bit, below 90 degrees", {9, 5, 1, 1}, 1, {0}, {1}},
      {"one bit, the tie at 90 degrees", {9, 3, 3, 1}, 1, {0}, {1}},
      {"one bit, above 90 degrees", {9, 1, 5, 1}, 1, {1}, {1}},
  };
  for (const Case& c : cases) {
    // The range of the samples does not matter.
    for (const std::uint32_t bit_depth : {0u, 12u, 16u}) {
      const Planes planes = evaluate(c.samples, {bit_depth, c.output_max});
      EXPECT_NEAR(planes.level(Plane::azimuth, 0), c.azimuth.value, c.azimuth.tolerance) << c.name;
      EXPECT_NEAR(planes.level(Plane::dolp, 0), c.dolp.value, c.dolp.tolerance) << c.name;
    }
  }
}

TEST(PixelValues, LinearPlanes) {
  struct Case {
    const char* name;
    Samples samples;
    Scale scale;
    std::array<int, 3> levels;  ///< intensity, stokes_s1, stokes_s2.
  };
  const std::vector<Case> cases{
      {"below saturation", uniform(2047), {12, 4095}, {4094, 0, 0}},
      {"at saturation", uniform(2048), {12, 4095}, {4095, 0, 0}},
      {"samples of more than 12 bits", {5000, 0, 0, 0}, {12, 4095}, {2500, 4095, 0}},
      {"negative S1", {5, 0, 0, 6}, {12, 4095}, {6, 0, 0}},
      {"negative S2", {0, 5, 4, 0}, {12, 4095}, {4, 0, 0}},
      {"scaled down", uniform(500), {12, 255}, {62, 0, 0}},
      {"scaled up, the half taken before", {100, 20, 80, 0}, {8, 65535}, {25700, 25700, 15420}},
      {"scaled, the tie at 16383 / 6", {341, 0, 0, 0}, {10, 16383}, {2730, 5461, 0}},
      {"scaled up, samples of more than 8 bits", {300, 0, 0, 0}, {8, 65535}, {38550, 65535, 0}},
      {"full scale one less than that of the samples", {100, 0, 0, 0}, {8, 254}, {50, 100, 0}},
      {"bit depth 0, positive, negative and zero", {7, 9, 9, 0}, {0, 1000}, {1000, 1000, 1000}},
      {"bit depth 0, negative S1 and S2", {0, 9, 0, 9}, {0, 1000}, {1000, 0, 0}},
      {"output_max 1", {1, 0, 1, 0}, {1, 1}, {1, 1, 1}},
  };
  for (const Case& c : cases) {
    const Levels found = levels_of(evaluate(c.samples, c.scale));
    EXPECT_EQ((std::array{found[0], found[1], found[2]}), c.levels) << c.name;
  }
}

TEST(PixelValues, RatiosAreDivided) {
  struct Case {
    const char* name;
    Stokes stokes;
    std::array<float, 2> ratios;
  };
  const std::vector<Case> cases{
      {"rounded quotients", {1200, 800, -300}, {0x1.555556p-1f, -0.25f}},
      {"beyond 1", {1, 3, -2}, {3, -2}},
      {"negative S0", {-500, 300, -250}, {-0x1.333334p-1f, 0.5f}},
      {"S0 zero", {0, 300, -300}, {kInfinity, -kInfinity}},
      {"S0 negative zero", {-0.0f, 300, -300}, {-kInfinity, kInfinity}},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(evaluate(c.stokes).ratios(0), c.ratios) << c.name;
  }
  const auto [s1_ratio, s2_ratio] = evaluate(uniform(0)).ratios(0);
  EXPECT_TRUE(std::isnan(s1_ratio) && std::isnan(s2_ratio));
}

TEST(PixelValues, UnusualStokesValues) {
  constexpr float huge = 1e6f;  // An S0 that makes DoLP vanish.
  struct Case {
    const char* name;
    Stokes stokes;
    Levels levels;
  };
  const std::vector<Case> cases{
      {"S0 NaN", {kNaN, 100, 0}, {65535, 100, 0, 32768, 65535}},
      {"S1 NaN", {100, kNaN, 50}, {100, 65535, 50, 65535, 65535}},
      {"S2 NaN", {100, 50, kNaN}, {100, 50, 65535, 65535, 65535}},
      {"S2 NaN, S1 zero", {100, 0, kNaN}, {100, 0, 65535, 16384, 65535}},
      {"S0 infinite", {kInfinity, 100, 0}, {65535, 100, 0, 32768, 0}},
      {"S1 minus infinity", {100, -kInfinity, 0}, {100, 0, 0, 65535, 65535}},
      {"S2 infinite", {100, -1, kInfinity}, {100, 0, 65535, 49151, 65535}},
      {"S2 minus infinity", {100, 0, -kInfinity}, {100, 0, 0, 16384, 65535}},
      {"S0 denormal", {kDenormal, 100, 0}, {0, 100, 0, 32768, 65535}},
      {"S0 negative denormal", {-kDenormal, 100, 0}, {0, 100, 0, 32768, 0}},
      {"S1 denormal", {huge, kDenormal, 1}, {65535, 0, 1, 49151, 0}},
      {"S1 denormal, S2 zero", {huge, kDenormal, 0}, {65535, 0, 0, 65535, 0}},
      {"S0 negative", {-500, 300, 0}, {0, 300, 0, 32768, 0}},
      {"S0 zero", {0, 300, 0}, {0, 300, 0, 32768, 0}},
      {"S0 negative zero", {-0.0f, -300, 0}, {0, 0, 0, 65535, 0}},
      {"S1 negative zero", {huge, -0.0f, 5}, {65535, 0, 5, 49151, 0}},
      {"S2 negative zero, S1 positive", {huge, 5, -0.0f}, {65535, 5, 0, 32768, 0}},
      {"S2 negative zero, S1 negative", {huge, -5, -0.0f}, {65535, 0, 0, 65535, 0}},
      {"S2 just below zero, S1 negative", {1e9f, -30000, -1}, {65535, 0, 0, 0, 2}},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(levels_of(evaluate(c.stokes)), c.levels) << c.name;
  }
}

TEST(PixelValues, EveryOperationIsRoundedByItself) {
  constexpr float two_to_24 = 0x1p24f;
  // 4097 * 4097 needs 25 bits and loses its last one; a fused operation would keep it.
  constexpr float square = 16785408;
  const Weights weights{two_to_24, 1,       1, -two_to_24,  // left to right, both ones are lost
                        4097,      -square, 0, 0,           //
                        1,         0,       0, two_to_24,   //
                        0,         0,       0, 0};
  EXPECT_EQ(evaluate(uniform(1), {}, &weights).level(Plane::intensity, 0), 0);
  EXPECT_EQ(evaluate(Samples{4097, 1, 0, 0}, {}, &weights).level(Plane::stokes_s1, 0), 0);
}

TEST(PixelValues, RoundingFollowsTheThread) {
  struct Case {
    const char* name;
    Samples samples;
    Scale scale;
    Plane plane;
    std::array<int, 4> levels;  ///< To nearest, down, up, towards zero.
  };
  const std::vector<Case> cases{
      {"0.5", {1, 0, 0, 0}, {}, Plane::intensity, {0, 0, 1, 0}},
      {"1.5", {3, 0, 0, 0}, {}, Plane::intensity, {2, 1, 2, 1}},
      {"2.5", {5, 0, 0, 0}, {}, Plane::intensity, {2, 2, 3, 2}},
      {"3.5", {7, 0, 0, 0}, {}, Plane::intensity, {4, 3, 4, 3}},
      {"62.27", uniform(500), {12, 255}, Plane::intensity, {62, 62, 63, 62}},
      {"saturated", uniform(65535), {}, Plane::intensity, {65535, 65535, 65535, 65535}},
      {"-1", {1, 1, 0, 2}, {}, Plane::stokes_s1, {0, 0, 0, 0}},
      {"mid-scale", uniform(9), {}, Plane::azimuth, {32768, 32767, 32768, 32767}},
  };
  for (std::size_t mode = 0; mode < kRoundingModes.size(); ++mode) {
    const RoundingScope rounding(kRoundingModes[mode].value);
    for (const Case& c : cases) {
      EXPECT_EQ(evaluate(c.samples, c.scale).level(c.plane, 0), c.levels[mode])
          << c.name << " rounded " << kRoundingModes[mode].name;
    }
  }
}

}  // namespace
}  // namespace kv::test
