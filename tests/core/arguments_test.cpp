// What a transform refuses, and which of several faults it reports.
#include <gtest/gtest.h>

#include <array>
#include <functional>
#include <limits>
#include <string>

#include "public_call.h"

namespace kv::test {
namespace {

/// Everything that a fault can spoil.
struct Call {
  PolarizationProcessor* handle;
  Arguments arguments;
};

struct Fault {
  const char* name;
  ProcessorStatus status;
  std::function<void(Call&)> spoil;
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
const std::vector<Fault> kFaults{
    {"null handle", kv_status_null_handle, [](Call& c) { c.handle = nullptr; }},
    {"phase 4", kv_status_invalid_polar_phase, [](Call& c) { c.arguments.polar_phase = 4; }},
    {"null input", kv_status_null_input, [](Call& c) { c.arguments.input = nullptr; }},
    {"no planes", kv_status_no_outputs, [](Call& c) { ask_for_nothing(c.arguments); }},
    {"dolp is the input", kv_status_input_aliases_output,
     [](Call& c) { c.arguments.dolp = input_of(c.arguments); }},
    {"stokes_s1 is stokes_s2", kv_status_outputs_alias,
     [](Call& c) { c.arguments.stokes_s1 = c.arguments.stokes_s2; }},
    {"width 1", kv_status_invalid_width, [](Call& c) { c.arguments.width = 1; }},
    {"height 1", kv_status_invalid_height, [](Call& c) { c.arguments.height = 1; }},
    {"output_max 0", kv_status_zero_output_max, [](Call& c) { c.arguments.output_max = 0; }},
    {"bit_depth 17", kv_status_invalid_bit_depth, [](Call& c) { c.arguments.bit_depth = 17; }},
};

class ArgumentChecks : public testing::Test {
 protected:
  Call sound_call() {
    Call call{processor_.handle(), {}};
    call.arguments.input = frame_.data();
    planes_.hand_to(call.arguments);
    return call;
  }

  void expect_refused(const Call& call, ProcessorStatus status, const std::string& what) {
    EXPECT_EQ(transform(call.handle, call.arguments), status) << what;
    EXPECT_TRUE(planes_.untouched()) << what;
    EXPECT_EQ(frame_, (std::array<std::uint16_t, 4>{1, 2, 3, 4})) << what;
  }

  Processor processor_;
  std::array<std::uint16_t, 4> frame_{1, 2, 3, 4};
  Planes planes_{4};
};

TEST_F(ArgumentChecks, AnEarlierFaultHidesALaterOne) {
  for (std::size_t first = 0; first < kFaults.size(); ++first) {
    for (std::size_t second = first; second < kFaults.size(); ++second) {
      Call call = sound_call();
      kFaults[second].spoil(call);
      kFaults[first].spoil(call);
      expect_refused(call, kFaults[first].status,
                     std::string(kFaults[first].name) + " with " + kFaults[second].name);
    }
  }
}

TEST_F(ArgumentChecks, NotInitializedHidesEverything) {
  kv_polarization_processor_module_terminate();
  for (const Fault& fault : kFaults) {
    Call call = sound_call();
    fault.spoil(call);
    expect_refused(call, kv_status_not_initialized, fault.name);
  }
  kv_polarization_processor_module_initialize();
}

TEST_F(ArgumentChecks, RangesAreSigned) {
  struct Case {
    const char* name;
    ProcessorStatus status;
    std::function<void(Arguments&)> spoil;
  };
  const std::vector<Case> cases{
      {"largest phase", kv_status_invalid_polar_phase, [](auto& a) { a.polar_phase = kHighest; }},
      {"width 0", kv_status_invalid_width, [](auto& a) { a.width = 0; }},
      {"width -2", kv_status_invalid_width, [](auto& a) { a.width = -2; }},
      {"lowest width", kv_status_invalid_width, [](auto& a) { a.width = kLowest; }},
      {"height 0", kv_status_invalid_height, [](auto& a) { a.height = 0; }},
      {"lowest height", kv_status_invalid_height, [](auto& a) { a.height = kLowest; }},
      {"largest depth", kv_status_invalid_bit_depth, [](auto& a) { a.bit_depth = 0xFFFFFFFFu; }},
  };
  for (const Case& c : cases) {
    Call call = sound_call();
    c.spoil(call.arguments);
    expect_refused(call, c.status, c.name);
  }
}

/// The planes as untyped addresses in the order of the arguments, so that pairs can be formed.
std::array<void*, kPlaneCount> addresses(const Arguments& a) {
  return {a.normalized_stokes, a.intensity, a.stokes_s1, a.stokes_s2, a.azimuth, a.dolp};
}

void place(Arguments& a, const std::array<void*, kPlaneCount>& at) {
  a.normalized_stokes = static_cast<float*>(at[0]);
  a.intensity = static_cast<std::uint16_t*>(at[1]);
  a.stokes_s1 = static_cast<std::uint16_t*>(at[2]);
  a.stokes_s2 = static_cast<std::uint16_t*>(at[3]);
  a.azimuth = static_cast<std::uint16_t*>(at[4]);
  a.dolp = static_cast<std::uint16_t*>(at[5]);
}

TEST_F(ArgumentChecks, EveryPairOfEqualBuffersIsFound) {
  for (std::size_t first = 0; first < kPlaneCount; ++first) {
    Call call = sound_call();
    auto at = addresses(call.arguments);
    at[first] = frame_.data();
    place(call.arguments, at);
    expect_refused(call, kv_status_input_aliases_output, kPlaneNames[first]);

    for (std::size_t second = first + 1; second < kPlaneCount; ++second) {
      call = sound_call();
      at = addresses(call.arguments);
      at[second] = at[first];
      place(call.arguments, at);
      expect_refused(call, kv_status_outputs_alias,
                     std::string(kPlaneNames[first]) + " and " + kPlaneNames[second]);
    }
  }
}

TEST_F(ArgumentChecks, TheInputAmongPlanesIsReportedBeforeEqualPlanes) {
  Call call = sound_call();
  call.arguments.stokes_s1 = call.arguments.intensity;
  call.arguments.dolp = frame_.data();
  expect_refused(call, kv_status_input_aliases_output, "both");
}

TEST_F(ArgumentChecks, LimitsAreAccepted) {
  for (const std::uint32_t bit_depth : {0u, 16u}) {
    for (const std::uint16_t output_max : std::array<std::uint16_t, 2>{1, 65535}) {
      for (const PolarPhase phase : {kLowest, -1, 0, 3}) {
        Call call = sound_call();
        call.arguments.bit_depth = bit_depth;
        call.arguments.output_max = output_max;
        call.arguments.polar_phase = phase;
        EXPECT_EQ(transform(call.handle, call.arguments), kv_status_ok)
            << "bit_depth " << bit_depth << ", output_max " << output_max << ", phase " << phase;
      }
    }
  }
}

}  // namespace
}  // namespace kv::test
