// The records of a call as a vector module finds them in memory.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <limits>

#include "core/mosaic.h"
#include "core/public_call.h"
#include "fake_platform.h"

namespace kv::test {
namespace {

using Request = TransformRequest;
using Offsets = std::array<std::size_t, 14>;
static_assert(Offsets{offsetof(Request, height), offsetof(Request, width),
                      offsetof(Request, polar_phase), offsetof(Request, input),
                      offsetof(Request, bit_depth), offsetof(Request, input_max),
                      offsetof(Request, output_max), offsetof(Request, output_max_int),
                      offsetof(Request, normalized_stokes), offsetof(Request, intensity),
                      offsetof(Request, stokes_s1), offsetof(Request, stokes_s2),
                      offsetof(Request, azimuth), offsetof(Request, dolp)} ==
              Offsets{0, 8, 16, 24, 32, 36, 40, 44, 48, 56, 64, 72, 80, 88});
static_assert(sizeof(Request) == 96 && sizeof(CoefficientSet) == 64);

class ModuleRequest : public testing::Test, protected ProcessorOfTier {
 protected:
  ModuleRequest() : ProcessorOfTier(CpuTier::avx512) {}

  ModuleCall call(const Arguments& arguments) {
    EXPECT_EQ(transform(&processor, arguments), kv_status_ok);
    EXPECT_EQ(take_events(), Events{"transform avx512"} + timing_line());
    return last_module_call();
  }

  /// Of a frame of 2 rows and 3 columns. Nobody reads or writes it.
  std::array<std::uint16_t, 6> samples_{};
  Planes planes_{6};
  Arguments arguments_{.input = samples_.data(), .width = 3, .height = 2};
};

using Addresses = std::array<const void*, 6>;

Addresses planes_of(const auto& a) {
  return {a.normalized_stokes, a.intensity, a.stokes_s1, a.stokes_s2, a.azimuth, a.dolp};
}

TEST_F(ModuleRequest, Fields) {
  struct Scale {
    std::uint32_t bit_depth;
    float input_max;
    std::uint16_t output_max;
  };
  for (const Scale& scale : std::vector<Scale>{{0, 0, 1}, {10, 1023, 4095}, {16, 65535, 65535}}) {
    for (const std::size_t planes : {1u, 2u, 4u, 8u, 16u, 32u, 63u}) {
      arguments_.bit_depth = scale.bit_depth;
      arguments_.output_max = scale.output_max;
      planes_.hand_to(arguments_, OutputSet::from_number(planes));
      const ModuleCall seen = call(arguments_);
      EXPECT_EQ(seen.request.height, 2);
      EXPECT_EQ(seen.request.width, 3);
      EXPECT_EQ(seen.request.input, samples_.data());
      EXPECT_EQ(seen.request.bit_depth, scale.bit_depth);
      EXPECT_EQ(seen.request.input_max, scale.input_max);
      EXPECT_EQ(seen.request.output_max, scale.output_max);
      EXPECT_EQ(seen.request.output_max_int, scale.output_max);
      EXPECT_EQ(planes_of(seen.request), planes_of(arguments_));
      EXPECT_EQ(seen.sse41_available, sse41_available());
      EXPECT_EQ(seen.instance, &processor);
    }
  }
}

// A frame that starts elsewhere on the sensor has the polarizer of that place at its top left.
TEST_F(ModuleRequest, PhaseAndView) {
  constexpr std::int32_t kLowest = std::numeric_limits<std::int32_t>::min();
  constexpr std::int32_t kHighest = std::numeric_limits<std::int32_t>::max();
  constexpr std::int32_t kOrigins[]{kLowest, -4, -3, -2, -1, 0, 1, 2, 3, 4, kHighest};
  const auto negative_odd = [](std::int32_t origin) { return origin < 0 && origin % 2 != 0; };
  planes_.hand_to(arguments_);
  for (const std::int32_t row : kOrigins) {
    for (const std::int32_t column : kOrigins) {
      const std::size_t place = negative_odd(row) || negative_odd(column)
                                    ? cell_position(1, 1)
                                    : cell_position(row & 1, column & 1);
      for (const PolarPhase phase : {0, 1, 2, 3, -1, -2, -3, -4, -7, kLowest}) {
        SCOPED_TRACE(testing::Message()
                     << "row " << row << ", column " << column << ", phase " << phase);
        arguments_.polar_phase = phase;
        arguments_.x_origin = column;
        arguments_.y_origin = row;
        const ModuleCall seen = call(arguments_);
        const auto sensor_phase = static_cast<std::size_t>(std::max(phase, 0));
        const std::size_t frame_phase = kMosaics[sensor_phase][place];
        // An even origin leaves a negative phase as it is.
        EXPECT_EQ(seen.request.polar_phase, place == 0 ? phase : PolarPhase(frame_phase));
        // The sets stand at the begin of the instance.
        const auto* const sets = reinterpret_cast<const CoefficientSet*>(&processor);
        for (std::size_t position = 0; position < 4; ++position) {
          EXPECT_EQ(seen.view[position], sets + kMosaics[frame_phase][position]);
        }
      }
    }
  }
}

}  // namespace
}  // namespace kv::test
