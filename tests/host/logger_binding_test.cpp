// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

// The optional logger: whatever is there, and whatever it does, no call of the library changes.
#include <gtest/gtest.h>

#include <thread>

#include "fake_platform.h"
#include "polarization_processor/module_state.h"

namespace kv::test {
namespace {

struct Situation {
  const char* faulty;
  Fault fault;
  Events of_initialize;
  Events of_transform;
  Events of_terminate;
};

const std::vector<Situation> kSituations{
    {"logger", Fault::missing, {}, {}, {}},
    {"qrm_get_log", Fault::missing, {kLoggerComes[0]}, {}, kLoggerGoes},
    {"qrm_get_log", Fault::fails, kLoggerComes, {}, kLoggerGoes},
    {"qrm_log", Fault::missing, kLoggerComes, {}, kLoggerGoes},
    {"qrm_log", Fault::fails, kLoggerComes, kNullHandleToTransform, kLoggerGoes},
    {"qrm_log", Fault::throws, kLoggerComes, kNullHandleToTransform, kLoggerGoes},
    {"qrm_free_log", Fault::missing, kLoggerComes, kNullHandleToTransform, {kLoggerGoes[1]}},
    // The library of a logger that throws stays loaded: its code may still be on the stack.
    {"qrm_free_log", Fault::throws, kLoggerComes, kNullHandleToTransform, {kLoggerGoes[0]}},
};

TEST(LoggerBinding, CallsFromInitializeToTerminate) {
  for (const Situation& situation : kSituations) {
    SCOPED_TRACE(testing::Message() << situation.faulty << static_cast<int>(situation.fault));
    set_platform({{situation.faulty, situation.fault}});
    EXPECT_EQ(initialize(), kv_status_ok);
    EXPECT_EQ(take_events(), situation.of_initialize);
    EXPECT_EQ(transform(nullptr, {.polar_phase = 4}), kv_status_null_handle);
    EXPECT_EQ(take_events(), situation.of_transform);
    EXPECT_EQ(terminate(), kv_status_ok);
    EXPECT_EQ(take_events(), situation.of_terminate);
  }
}

// The one fault of a logger that reaches the caller. The module stays closed, and its lock taken.
TEST(LoggerBinding, AnExceptionOfGetLogPassesOutOfInitialize) {
  set_platform({{"qrm_get_log", Fault::throws}});
  EXPECT_THROW(initialize(), Thrown);
  EXPECT_EQ(take_events(), kLoggerComes);
  EXPECT_EQ(destroy(nullptr), kv_status_not_initialized);
  std::thread([] { EXPECT_FALSE(module_mutex().try_lock()); }).join();
  module_mutex().unlock();
}

TEST(LoggerBinding, DurationsAreThoseOfTheCounter) {
  constexpr std::int64_t kLarge = 9'007'199'254'740'993;  // not a double
  const std::pair<Counter, Events> durations[]{
      {{1'000'000'000, 50, 1'234'617}, timing_line("1234.567000")},
      {{3, 10, 15}, timing_line("1666666.666667")},
      {{10'000'000, kLarge, kLarge + 1}, timing_line("0.100000")},
      {{1'000, 50, 40}, timing_line("0.000000")},
      {{.stop = -1}, {}},
  };
  for (const auto& [counter, lines] : durations) {
    const OpenModule module({}, counter);
    EXPECT_EQ(transform(nullptr, {}), kv_status_null_handle);
    Events events = take_events();
    events.erase(events.begin());  // of the null handle
    EXPECT_EQ(events, lines);
  }
}

}  // namespace
}  // namespace kv::test
