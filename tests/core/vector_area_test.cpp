// What sets the vector area apart from the scalar parts around it, in values worked by hand.
#include <gtest/gtest.h>
#include <xmmintrin.h>

#include <algorithm>
#include <bit>
#include <cmath>

#include "kernel_run.h"

namespace kv::test {
namespace {

class VectorArea : public BothForms {
 protected:
  /// Calls `visit` with row and column.
  template <class Visit>
  static void for_all_pixels(const Frame& frame, Visit visit) {
    for (std::size_t row = 0; row < frame.height; ++row) {
      for (std::size_t column = 0; column < frame.width; ++column) visit(row, column);
    }
  }

  static bool in_vector_area(const Frame& frame, std::size_t row, std::size_t column) {
    return row < paired_rows(frame.height) && column < vector_columns(frame.width);
  }
};

Frame flat_frame(std::uint16_t value, std::uint32_t bit_depth) {
  return {.height = 7,
          .width = 45,
          .samples = std::vector<std::uint16_t>(7 * 45, value),
          .bit_depth = bit_depth,
          .output_max = 65535};
}

float reciprocal(float x) {
  volatile float at_run_time = x;
  return _mm_cvtss_f32(_mm_rcp_ss(_mm_set_ss(at_run_time)));
}

TEST_P(VectorArea, FlatFrameHasAStepAtItsEdge) {
  struct Case {
    const char* name;
    Frame frame;
    int beside;
    float inside;      ///< With the reciprocals of this processor.
    int known_inside;  ///< With those of many; 0 where this processor has others.
  };
  const float half = reciprocal(2);
  const float input_reciprocal = reciprocal(4095);
  const bool known_half = half == 0x1.ffep-2f;                     // 0.49987793
  const bool known_reciprocal = input_reciprocal == 0x1.001p-12f;  // 0.00024420023
  const std::vector<Case> cases{
      {"unscaled", flat_frame(4000, 16), 8000, 16000 * half, known_half ? 7998 : 0},
      {"scaled", flat_frame(2000, 12), 64015, 8000 * half * 65535 * input_reciprocal,
       known_half && known_reciprocal ? 63999 : 0},
  };
  for (const Case& c : cases) {
    const Planes planes = run_kernel(c.frame, 0, processor_, sse41());
    const auto inside = static_cast<int>(std::lrint(c.inside));
    EXPECT_TRUE(c.known_inside == 0 || c.known_inside == inside) << c.name << ": " << inside;
    for_all_pixels(c.frame, [&](std::size_t row, std::size_t column) {
      const std::size_t pixel = row * c.frame.width + column;
      ASSERT_EQ(planes.intensity[pixel], in_vector_area(c.frame, row, column) ? inside : c.beside)
          << c.name << ", row " << row << ", column " << column;
      ASSERT_EQ(planes.stokes_s1[pixel], 0);
      ASSERT_EQ(planes.stokes_s2[pixel], 0);
      ASSERT_EQ(planes.azimuth[pixel], 32768);
      ASSERT_EQ(planes.dolp[pixel], 0);
    });
  }
}

TEST_P(VectorArea, StaysAtTheDefaultWeights) {
  const Frame frame = flat_frame(4000, 16);
  const Planes before = run_kernel(frame, 0, processor_, sse41());
  for (CoefficientSet& set : processor_.coefficient_store) {
    for (float& weight : set.s0_weights) weight *= 2;
  }
  const Planes after = run_kernel(frame, 0, processor_, sse41());
  for_all_pixels(frame, [&](std::size_t row, std::size_t column) {
    const std::size_t pixel = row * frame.width + column;
    const int factor = in_vector_area(frame, row, column) ? 1 : 2;
    ASSERT_EQ(after.intensity[pixel], factor * before.intensity[pixel])
        << "row " << row << ", column " << column;
  });
}

/// The one sample is the diagonal of the block's last lane, and out of reach of the others.
TEST_P(VectorArea, OnlyTheSse2FormSeesTheColumnBehindABlock) {
  for (const std::size_t width : {8u, 9u, 12u, 40u}) {
    Frame frame{.height = 4, .width = width, .samples = std::vector<std::uint16_t>(4 * width, 0)};
    frame.samples[4] = 1000;
    const Planes planes = run_kernel(frame, 0, processor_, sse41());
    EXPECT_EQ(planes.intensity[2], 0) << width;
    if (sse41()) {
      EXPECT_EQ(planes.intensity[3], 0) << width;
    } else {
      EXPECT_NEAR(planes.intensity[3], 500, 0.5) << width;
    }
  }
}

TEST_P(VectorArea, FourthLaneRepeatsTheThirdInTheSse41FormOnly) {
  for (const std::size_t width : {8u, 11u, 25u, 40u, 83u}) {
    const Frame frame{.height = 7, .width = width, .samples = noise(7 * width, 11)};
    const Planes planes = run_kernel(frame, 1, processor_, sse41());
    std::size_t different = 0;
    for (std::size_t row = 0; row < paired_rows(frame.height); ++row) {
      for (std::size_t column = 3; column < vector_columns(width); column += 4) {
        const std::size_t pixel = row * width + column;
        const bool repeated = planes.intensity[pixel] == planes.intensity[pixel - 1] &&
                              planes.stokes_s1[pixel] == planes.stokes_s1[pixel - 1] &&
                              planes.stokes_s2[pixel] == planes.stokes_s2[pixel - 1] &&
                              planes.azimuth[pixel] == planes.azimuth[pixel - 1] &&
                              planes.dolp[pixel] == planes.dolp[pixel - 1];
        if (!repeated) ++different;
      }
    }
    if (sse41()) {
      EXPECT_EQ(different, 0u) << width;
    } else {
      EXPECT_GT(different, 0u) << width;
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Forms, VectorArea, testing::Bool(), form_name);

}  // namespace
}  // namespace kv::test
