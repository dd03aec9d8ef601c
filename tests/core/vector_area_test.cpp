// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

// What sets the vector area apart from the scalar parts around it, in values worked by hand.
#include <gtest/gtest.h>
#include <xmmintrin.h>

#include <cmath>

#include "every_path.h"
#include "mosaic.h"

namespace kv::test {
namespace {

using VectorArea = EveryPath;

float reciprocal(float x) {
  volatile float at_run_time = x;
  return _mm_cvtss_f32(_mm_rcp_ss(_mm_set_ss(at_run_time)));
}

/// Blocks for two steps of the widest vectors, with one left over.
constexpr std::size_t kHeight = 7, kWidth = 4 * 34 + 1;

/// Of a scene that is the same everywhere.
struct Levels {
  int intensity, stokes_s1, stokes_s2;
  float s1_ratio;
  int azimuth;
  int azimuth_tolerance;  ///< For the approximate reciprocals of the cubic arctangent.
};

TEST_P(VectorArea, HasAStepAtItsEdge) {
  const float half = reciprocal(2);  // On many processors 0.49987793.
  const auto level = [](float value) { return static_cast<int>(std::lrint(value)); };
  const auto scaled = [&](float value) { return level(value * 65535 * reciprocal(4095)); };
  struct Case {
    std::array<std::uint16_t, 4> scene;
    std::uint32_t bit_depth;
    std::uint16_t output_max;
    Levels beside, inside;
  };
  const std::vector<Case> cases{
      {{9000, 5000, 3000, 1000},
       16,
       65535,
       {9000, 6000, 4000, 6000.0f / 9000, 38936, 4},
       {level(18000 * half), 6000, 4000, 6000 / (18000 * half), 38936, 4}},
      {{2700, 1500, 900, 300},
       12,
       65535,
       {43210, 28807, 19204, 1800.0f / 2700, 38936, 4},
       {scaled(5400 * half), scaled(1800), scaled(1200), 1800 / (5400 * half), 38936, 4}},
      // The middle of 0 to 13 is a tie. In the float that is nearest to 13 / 180, and above it, a
      // degree is a little longer.
      {{65535, 65535, 65535, 65535}, 16, 13, {13, 0, 0, 0, 6, 0}, {13, 0, 0, 0, 7, 0}}};
  for (const Case& c : cases) {
    for (std::uint32_t phase = 0; phase < kMosaics.size(); ++phase) {
      const Frame frame{.height = kHeight,
                        .width = kWidth,
                        .samples = uniform_scene(c.scene, phase, kHeight, kWidth),
                        .bit_depth = c.bit_depth,
                        .output_max = c.output_max};
      const Planes planes = run(frame, phase);
      for (std::size_t pixel = 0; pixel < kHeight * kWidth; ++pixel) {
        SCOPED_TRACE(testing::Message() << "phase " << phase << ", pixel " << pixel);
        const Levels& expected =
            in_vector_area(frame, pixel / kWidth, pixel % kWidth) ? c.inside : c.beside;
        ASSERT_EQ(planes.level(Plane::intensity, pixel), expected.intensity);
        ASSERT_EQ(planes.level(Plane::stokes_s1, pixel), expected.stokes_s1);
        ASSERT_EQ(planes.level(Plane::stokes_s2, pixel), expected.stokes_s2);
        ASSERT_NEAR(planes.level(Plane::azimuth, pixel), expected.azimuth,
                    expected.azimuth_tolerance);
      }
      EXPECT_EQ(planes.ratios(0)[0], c.inside.s1_ratio);
      EXPECT_EQ(planes.ratios(kHeight * kWidth - 1)[0], c.beside.s1_ratio);
    }
  }
}

TEST_P(VectorArea, StaysAtTheDefaultWeights) {
  for (CoefficientSet& set : processor_.coefficient_store) set.s0_weights.fill(2);
  const Frame frame{.height = kHeight,
                    .width = kWidth,
                    .samples = std::vector<std::uint16_t>(kHeight * kWidth, 4000)};
  const Planes planes = run(frame, 0, OutputSet(Plane::intensity));
  for (std::size_t pixel = 0; pixel < kHeight * kWidth; ++pixel) {
    const bool inside = in_vector_area(frame, pixel / kWidth, pixel % kWidth);
    ASSERT_NEAR(planes.level(Plane::intensity, pixel), inside ? 8000 : 16000, 3) << pixel;
  }
}

/// The right columns of two neighbouring blocks, with samples of 600 and 1000 at their border.
TEST_P(VectorArea, FourthColumnRepeatsTheThirdButInTheSse2Form) {
  for (const std::size_t width : {8u, 9u, 12u, 40u, 83u}) {
    Frame frame{.height = 4, .width = width, .samples = std::vector<std::uint16_t>(4 * width, 0)};
    frame.samples[3] = 600;
    frame.samples[4] = 1000;
    const Planes planes = run(frame, 0);
    EXPECT_NEAR(planes.level(Plane::intensity, 2), 300, 0.5) << width;
    EXPECT_NEAR(planes.level(Plane::intensity, 3), sse41() ? 300 : 800, 0.5) << width;
  }
}

INSTANTIATE_TEST_SUITE_P(Paths, VectorArea, testing::ValuesIn(kPaths), path_name);

}  // namespace
}  // namespace kv::test
