// The optional logger: whatever is there, and whatever it does, no call of the library changes.
#include <gtest/gtest.h>

#include <thread>

#include "core/public_call.h"
#include "fake_platform.h"
#include "polarization_processor/module_state.h"

namespace kv::test {
namespace {

const Events kNothing;
const Events kLoad{kLoggerComes[0]};
const Events kFree{kLoggerGoes[0]};
const Events kUnload{kLoggerGoes[1]};

struct Situation {
  Faults faults;
  Events of_initialize;
  Events of_transform;
  Events of_terminate;
};

const std::vector<Situation> kSituations{
    {{{"logger", Fault::missing}}, kNothing, kNothing, kNothing},
    {{{"qrm_get_log", Fault::missing}}, kLoad, kNothing, kLoggerGoes},
    {{{"qrm_get_log", Fault::fails}}, kLoggerComes, kNothing, kLoggerGoes},
    {{{"qrm_log", Fault::missing}}, kLoggerComes, kNothing, kLoggerGoes},
    {{{"qrm_log", Fault::fails}}, kLoggerComes, null_handle_to_transform(), kLoggerGoes},
    {{{"qrm_log", Fault::throws}}, kLoggerComes, null_handle_to_transform(), kLoggerGoes},
    {{{"qrm_free_log", Fault::missing}}, kLoggerComes, null_handle_to_transform(), kUnload},
    // The library of a logger that throws stays loaded: its code may still be on the stack.
    {{{"qrm_free_log", Fault::throws}}, kLoggerComes, null_handle_to_transform(), kFree},
};

TEST(LoggerBinding, CallsFromInitializeToTerminate) {
  for (const Situation& situation : kSituations) {
    const auto& [name, fault] = *situation.faults.begin();
    SCOPED_TRACE(testing::Message() << name << ", fault " << static_cast<int>(fault));
    const FakePlatform platform(situation.faults);
    EXPECT_EQ(initialize(), kv_status_ok);
    EXPECT_EQ(platform.take_events(), situation.of_initialize);
    EXPECT_EQ(transform(nullptr, {}), kv_status_null_handle);
    EXPECT_EQ(platform.take_events(), situation.of_transform);
    EXPECT_EQ(terminate(), kv_status_ok);
    EXPECT_EQ(platform.take_events(), situation.of_terminate);
  }
}

// The one fault of a logger that reaches the caller. The module stays closed, and its lock taken.
TEST(LoggerBinding, AnExceptionOfGetLogPassesOutOfInitialize) {
  const FakePlatform platform({{"qrm_get_log", Fault::throws}});
  EXPECT_THROW(initialize(), Thrown);
  EXPECT_EQ(platform.take_events(), kLoggerComes);
  EXPECT_EQ(destroy(nullptr), kv_status_not_initialized);
  std::thread([] { EXPECT_FALSE(module_mutex().try_lock()); }).join();
  module_mutex().unlock();
}

struct Duration {
  Counter counter;
  Events lines;
};

TEST(LoggerBinding, DurationsAreThoseOfTheCounter) {
  constexpr std::int64_t kLarge = 9'007'199'254'740'993;  // not a double
  for (const Duration& duration : std::vector<Duration>{
           {{.frequency = 1'000'000'000, .start = 50, .stop = 1'234'617},
            timing_line("1234.567000")},
           {{.frequency = 3, .start = 10, .stop = 15}, timing_line("1666666.666667")},
           {{.frequency = 10'000'000, .start = kLarge, .stop = kLarge + 1},
            timing_line("0.100000")},
           {{.frequency = 1, .start = 7, .stop = 7}, timing_line("0.000000")},
           {{.stop = std::nullopt}, {}}}) {
    const OpenModule module({}, duration.counter);
    EXPECT_EQ(transform(nullptr, {}), kv_status_null_handle);
    Events events = module.take_events();
    events.erase(events.begin());  // of the null handle
    EXPECT_EQ(events, duration.lines);
  }
}

}  // namespace
}  // namespace kv::test
