// The two levels of life, the module, which counts, and processors, which outlive it: the status of
// each call, and what companions see of it.
#include <gtest/gtest.h>

#include "core/public_call.h"
#include "fake_platform.h"

namespace kv::test {
namespace {

/// A call on the one handle of a story, which is null until it is created.
struct Step {
  ProcessorStatus (*call)(PolarizationProcessor*& handle);
  ProcessorStatus status;
  Events events = {};
};

ProcessorStatus open(PolarizationProcessor*&) { return initialize(); }
ProcessorStatus close(PolarizationProcessor*&) { return terminate(); }
ProcessorStatus make(PolarizationProcessor*& handle) { return create(handle); }
ProcessorStatus free(PolarizationProcessor*& handle) { return destroy(handle); }
ProcessorStatus get(PolarizationProcessor*& handle) {
  std::array<Weights, 4> weights;
  return get_weights(handle, weights);
}
ProcessorStatus set(PolarizationProcessor*& handle) {
  return set_weights(handle, std::array<Weights, 4>{});
}
ProcessorStatus run(PolarizationProcessor*& handle) {
  const std::array<std::uint16_t, 4> frame{};
  std::array<std::uint16_t, 4> intensity;
  return transform(handle, {.input = frame.data(), .intensity = intensity.data()});
}

constexpr ProcessorStatus ok = kv_status_ok;
constexpr ProcessorStatus closed = kv_status_not_initialized;
constexpr ProcessorStatus null_handle = kv_status_null_handle;

const char kNullHandle[] = "ERROR:  The specified polarization processor handle is NULL!";
const Events kModulesCome{"load avx512", "initialize avx512", "load avx2", "initialize avx2"};
const Events kModulesGo{"terminate avx2", "unload avx2", "terminate avx512", "unload avx512"};

struct Story {
  const char* name;
  std::vector<Step> steps;
};

const std::vector<Story> kStories{
    {"everything but terminate is refused before initialize",
     {{make, closed},
      {free, closed},
      {get, closed},
      {set, closed},
      {run, closed},
      {close, ok},
      {open, ok, kLoggerComes},
      {close, ok, kLoggerGoes},
      {close, ok}}},
    {"nesting, and a second life",
     {{open, ok, kLoggerComes},
      {open, ok},
      {close, ok},
      {run, null_handle, null_handle_to_transform()},
      {close, ok, kLoggerGoes},
      {run, closed},
      {open, ok, kLoggerComes},
      {close, ok, kLoggerGoes}}},
    {"null handles",
     {{open, ok, kLoggerComes},
      {get, null_handle, error_line("get_custom_calibration_coefficients", kNullHandle)},
      {set, null_handle, error_line("set_custom_calibration_coefficients", kNullHandle)},
      {free, null_handle,
       error_line("destroy_polarization_processor",
                  "ERROR:  The specified color processor handle is NULL!")},
      {close, ok, kLoggerGoes}}},
    {"a processor outlives the module",
     {{open, ok, kLoggerComes},
      {make, ok, kModulesCome},
      {close, ok, kLoggerGoes},
      {run, closed},
      {get, closed},
      {set, closed},
      {free, closed},
      {make, closed},
      {open, ok, kLoggerComes},
      {get, ok},
      {set, ok},
      {run, ok, timing_line()},
      {free, ok, kModulesGo},
      {close, ok, kLoggerGoes}}},
};

TEST(Lifecycle, StatusAndEventsOfEachStep) {
  for (const Story& story : kStories) {
    // Modules that come and go, and get no frame whatever the processor.
    const FakePlatform platform(
        {{"initialize avx512", Fault::fails}, {"initialize avx2", Fault::fails}});
    PolarizationProcessor* handle = nullptr;
    for (std::size_t i = 0; i < story.steps.size(); ++i) {
      SCOPED_TRACE(testing::Message() << story.name << ", step " << i);
      PolarizationProcessor* const before = handle;
      EXPECT_EQ(story.steps[i].call(handle), story.steps[i].status);
      EXPECT_EQ(platform.take_events(), story.steps[i].events);
      if (story.steps[i].status != ok) {
        EXPECT_EQ(handle, before);
      }
    }
  }
}

}  // namespace
}  // namespace kv::test
