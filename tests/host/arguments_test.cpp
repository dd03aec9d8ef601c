// What a transform refuses, and which of several faults it reports. Each refusal is timed as well.
#include <gtest/gtest.h>

#include <functional>
#include <limits>

#include "core/public_call.h"
#include "fake_platform.h"

namespace kv::test {
namespace {

struct Spoilt {
  const char* name;
  ProcessorStatus status;
  std::function<void(Arguments&)> spoil;
};

constexpr std::int32_t kLowest = std::numeric_limits<std::int32_t>::min();
constexpr std::int32_t kHighest = std::numeric_limits<std::int32_t>::max();

void ask_for_nothing(Arguments& a) {
  a.normalized_stokes = nullptr;
  a.intensity = a.stokes_s1 = a.stokes_s2 = a.azimuth = a.dolp = nullptr;
}

/// A plane at the address of the input; it is refused before anything is written.
std::uint16_t* input_of(const Arguments& a) { return const_cast<std::uint16_t*>(a.input); }

/// In the order in which they are looked for.
const std::vector<Spoilt> kFaults{
    {"phase 4", kv_status_invalid_polar_phase, [](auto& a) { a.polar_phase = 4; }},
    {"largest phase", kv_status_invalid_polar_phase, [](auto& a) { a.polar_phase = kHighest; }},
    {"null input", kv_status_null_input, [](auto& a) { a.input = nullptr; }},
    {"no planes", kv_status_no_outputs, ask_for_nothing},
    {"dolp is the input", kv_status_input_aliases_output, [](auto& a) { a.dolp = input_of(a); }},
    {"s1 is s2", kv_status_outputs_alias, [](auto& a) { a.stokes_s1 = a.stokes_s2; }},
    {"width 1", kv_status_invalid_width, [](auto& a) { a.width = 1; }},
    {"lowest width", kv_status_invalid_width, [](auto& a) { a.width = kLowest; }},
    {"height 1", kv_status_invalid_height, [](auto& a) { a.height = 1; }},
    {"lowest height", kv_status_invalid_height, [](auto& a) { a.height = kLowest; }},
    {"output_max 0", kv_status_zero_output_max, [](auto& a) { a.output_max = 0; }},
    {"bit_depth 17", kv_status_invalid_bit_depth, [](auto& a) { a.bit_depth = 17; }},
    {"largest bit_depth", kv_status_invalid_bit_depth, [](auto& a) { a.bit_depth = ~0u; }},
};

class ArgumentChecks : public testing::Test, protected ProcessorOfTier {
 protected:
  ArgumentChecks() : ProcessorOfTier(CpuTier::baseline) {}

  Arguments sound() {
    Arguments arguments{.input = frame_.data()};
    planes_.hand_to(arguments);
    return arguments;
  }

  void expect_refused(const Arguments& arguments, ProcessorStatus status, const std::string& what) {
    SCOPED_TRACE(what);
    EXPECT_EQ(transform(&processor, arguments), status);
    EXPECT_EQ(take_events(), timing_line());
    EXPECT_TRUE(planes_.untouched());
    EXPECT_EQ(frame_, (std::array<std::uint16_t, 4>{1, 2, 3, 4}));
  }

  std::array<std::uint16_t, 4> frame_{1, 2, 3, 4};
  Planes planes_{4};
};

TEST_F(ArgumentChecks, AnEarlierFaultHidesALaterOne) {
  for (std::size_t first = 0; first < kFaults.size(); ++first) {
    for (std::size_t second = first; second < kFaults.size(); ++second) {
      Arguments arguments = sound();
      kFaults[second].spoil(arguments);
      kFaults[first].spoil(arguments);
      expect_refused(arguments, kFaults[first].status,
                     std::string(kFaults[first].name) + " with " + kFaults[second].name);
    }
  }
}

TEST_F(ArgumentChecks, TheStateOfTheModuleAndTheHandleGoFirst) {
  for (const Spoilt& fault : kFaults) {
    Arguments arguments = sound();
    fault.spoil(arguments);
    EXPECT_EQ(transform(nullptr, arguments), kv_status_null_handle) << fault.name;
    terminate();
    EXPECT_EQ(transform(&processor, arguments), kv_status_not_initialized) << fault.name;
    initialize();
  }
}

TEST_F(ArgumentChecks, EveryPairOfEqualBuffersIsFound) {
  // Each plane is put at the address of a buffer.
  const std::array<void (*)(Arguments&, void*), kPlanes.size()> put{
      [](auto& a, void* at) { a.normalized_stokes = static_cast<float*>(at); },
      [](auto& a, void* at) { a.intensity = static_cast<std::uint16_t*>(at); },
      [](auto& a, void* at) { a.stokes_s1 = static_cast<std::uint16_t*>(at); },
      [](auto& a, void* at) { a.stokes_s2 = static_cast<std::uint16_t*>(at); },
      [](auto& a, void* at) { a.azimuth = static_cast<std::uint16_t*>(at); },
      [](auto& a, void* at) { a.dolp = static_cast<std::uint16_t*>(at); }};
  alignas(float) char buffer[4];
  for (std::size_t first = 0; first < kPlanes.size(); ++first) {
    for (std::size_t second = first + 1; second < kPlanes.size(); ++second) {
      const std::string pair =
          std::string(kPlanes[first].name) + " and " + std::string(kPlanes[second].name);
      Arguments arguments = sound();
      put[first](arguments, buffer);
      put[second](arguments, buffer);
      expect_refused(arguments, kv_status_outputs_alias, pair);
      // The input among the planes is reported before equal planes.
      put[first](arguments, frame_.data());
      put[second](arguments, frame_.data());
      expect_refused(arguments, kv_status_input_aliases_output, pair + " at the input");
    }
    Arguments arguments = sound();
    put[first](arguments, frame_.data());
    expect_refused(arguments, kv_status_input_aliases_output, std::string(kPlanes[first].name));
  }
}

}  // namespace
}  // namespace kv::test
