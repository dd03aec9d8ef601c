// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

// The records of a call as a vector module finds them in memory.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <tuple>

#include "core/mosaic.h"
#include "fake_platform.h"

namespace kv::test {
namespace {

class ModuleRequest : public testing::Test, protected ProcessorOfTier {
 protected:
  ModuleRequest() : ProcessorOfTier(CpuTier::avx512) {}

  const ModuleCall& call() {
    EXPECT_EQ(transform(&processor, arguments_), kv_status_ok);
    EXPECT_EQ(take_events(), Events{"transform avx512"} + timing_line());
    return last_module_call;
  }

  /// Of a frame of 2 rows and 3 columns. Nobody reads or writes it.
  std::array<std::uint16_t, 6> samples_{};
  Planes planes_{6};
  Arguments arguments_{.input = samples_.data(), .width = 3, .height = 2};
};

TEST_F(ModuleRequest, Fields) {
  for (const auto& [bit_depth, input_max, output_max] :
       {std::tuple(0u, 0.0f, 1), std::tuple(10u, 1023.0f, 4095),
        std::tuple(16u, 65535.0f, 65535)}) {
    for (const std::size_t number : {1u, 2u, 4u, 8u, 16u, 32u, 63u}) {
      const OutputSet wanted = OutputSet::from_number(number);
      arguments_.bit_depth = bit_depth;
      arguments_.output_max = static_cast<std::uint16_t>(output_max);
      planes_.hand_to(arguments_, wanted);
      const ModuleCall& seen = call();
      const auto expect_at = [&]<class Field>(std::size_t offset, Field expected) {
        Field found;
        std::memcpy(&found, reinterpret_cast<const char*>(&seen.request) + offset, sizeof found);
        EXPECT_EQ(found, expected) << "byte " << offset;
      };
      expect_at(0, std::int64_t{2});
      expect_at(8, std::int64_t{3});
      expect_at(16, std::int32_t{0});
      expect_at(24, samples_.data());
      expect_at(32, bit_depth);
      expect_at(36, input_max);
      expect_at(40, static_cast<float>(output_max));
      expect_at(44, std::int32_t{output_max});
      for (const PlaneTraits& traits : kPlanes) {
        const void* const plane = planes_.bytes(traits.plane).data() + Planes::kGuard;
        expect_at(48 + 8 * index_of(traits.plane), wanted.has(traits.plane) ? plane : nullptr);
      }
      EXPECT_EQ(seen.sse41_available, sse41_available());
      EXPECT_EQ(seen.instance, &processor);
    }
  }
}

// A frame that starts elsewhere on the sensor has the polarizer of that place at its top left.
TEST_F(ModuleRequest, PhaseAndView) {
  constexpr std::int32_t kOrigins[]{INT32_MIN, -4, -3, -2, -1, 0, 1, 2, 3, 4, INT32_MAX};
  const auto negative_odd = [](std::int32_t origin) { return origin < 0 && origin % 2 != 0; };
  planes_.hand_to(arguments_);
  for (const std::int32_t row : kOrigins) {
    for (const std::int32_t column : kOrigins) {
      const std::size_t place = negative_odd(row) || negative_odd(column)
                                    ? cell_position(1, 1)
                                    : cell_position(row & 1, column & 1);
      for (const PolarPhase phase : {0, 1, 2, 3, -1, -2, -3, -4, -7, INT32_MIN}) {
        SCOPED_TRACE(testing::Message()
                     << "row " << row << ", column " << column << ", phase " << phase);
        arguments_.polar_phase = phase;
        arguments_.x_origin = column;
        arguments_.y_origin = row;
        const ModuleCall& seen = call();
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
