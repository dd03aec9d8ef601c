// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

// What a transform refuses, and which of several faults it reports. Each refusal is timed as well.
#include <gtest/gtest.h>

#include <cstdint>
#include <functional>

#include "fake_platform.h"

namespace kv::test {
namespace {

struct Spoilt {
  const char* name;
  ProcessorStatus status;
  std::function<void(Arguments&)> spoil;
};

/// A plane at the address of the input; it is refused before anything is written.
std::uint16_t* input_of(const Arguments& a) { return const_cast<std::uint16_t*>(a.input); }

/// In the order in which they are looked for.
const std::vector<Spoilt> kFaults{
    {"phase 4", kv_status_invalid_polar_phase, [](auto& a) { a.polar_phase = 4; }},
    {"largest phase", kv_status_invalid_polar_phase, [](auto& a) { a.polar_phase = INT32_MAX; }},
    {"null input", kv_status_null_input, [](auto& a) { a.input = nullptr; }},
    {"no planes", kv_status_no_outputs,
     [](auto& a) { point_to_planes(a, {}, [](Plane) { return nullptr; }); }},
    {"dolp is the input", kv_status_input_aliases_output, [](auto& a) { a.dolp = input_of(a); }},
    {"s1 is s2", kv_status_outputs_alias, [](auto& a) { a.stokes_s1 = a.stokes_s2; }},
    {"width 1", kv_status_invalid_width, [](auto& a) { a.width = 1; }},
    {"lowest width", kv_status_invalid_width, [](auto& a) { a.width = INT32_MIN; }},
    {"height 1", kv_status_invalid_height, [](auto& a) { a.height = 1; }},
    {"lowest height", kv_status_invalid_height, [](auto& a) { a.height = INT32_MIN; }},
    {"output_max 0", kv_status_zero_output_max, [](auto& a) { a.output_max = 0; }},
    {"bit_depth 17", kv_status_invalid_bit_depth, [](auto& a) { a.bit_depth = 17; }},
    {"largest bit_depth", kv_status_invalid_bit_depth, [](auto& a) { a.bit_depth = ~0u; }},
};

class ArgumentChecks : public testing::Test, protected ProcessorOfTier {
 protected:
  ArgumentChecks() : ProcessorOfTier(CpuTier::baseline) { planes_.hand_to(sound_); }

  void expect_refused(const Arguments& arguments, ProcessorStatus status) {
    EXPECT_EQ(transform(&processor, arguments), status);
    EXPECT_EQ(take_events(), timing_line());
    EXPECT_TRUE(planes_.untouched());
    EXPECT_EQ(frame_, (std::array<std::uint16_t, 4>{1, 2, 3, 4}));
  }

  std::array<std::uint16_t, 4> frame_{1, 2, 3, 4};
  Planes planes_{4};
  Arguments sound_{.input = frame_.data()};
};

TEST_F(ArgumentChecks, AnEarlierFaultHidesALaterOne) {
  for (std::size_t first = 0; first < kFaults.size(); ++first) {
    for (std::size_t second = first; second < kFaults.size(); ++second) {
      SCOPED_TRACE(std::string(kFaults[first].name) + " with " + kFaults[second].name);
      Arguments arguments = sound_;
      kFaults[second].spoil(arguments);
      kFaults[first].spoil(arguments);
      expect_refused(arguments, kFaults[first].status);
    }
  }
}

TEST_F(ArgumentChecks, EveryPairOfEqualBuffersIsFound) {
  std::array<std::array<float, 8>, kPlanes.size()> buffers;
  for (const PlaneTraits& first : kPlanes) {
    for (const PlaneTraits& second : kPlanes) {
      SCOPED_TRACE(testing::Message() << first.name << ", " << second.name);
      const auto expect_shared = [&](void* shared, ProcessorStatus status) {
        Arguments arguments = sound_;
        point_to_planes(arguments, OutputSet::all(), [&](Plane plane) -> void* {
          const bool shares = plane == first.plane || plane == second.plane;
          return shares ? shared : buffers[index_of(plane)].data();
        });
        expect_refused(arguments, status);
      };
      // The input among the planes is reported before equal planes.
      expect_shared(frame_.data(), kv_status_input_aliases_output);
      if (first.plane == second.plane) continue;
      expect_shared(buffers[index_of(first.plane)].data(), kv_status_outputs_alias);
    }
  }
}

}  // namespace
}  // namespace kv::test
