// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

// The two levels of life, the module, which counts, and processors, which outlive it: the status of
// each call, and what companions see of it. Then many lives at once.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <thread>

#include "fake_platform.h"

namespace kv::test {
namespace {

/// A call on the one handle of the story, which is null until it is created.
struct Step {
  std::function<ProcessorStatus(PolarizationProcessor*& handle)> call;
  ProcessorStatus status;
  Events events = {};
};

std::array<Weights, 4> weights;

ProcessorStatus open(PolarizationProcessor*&) { return initialize(); }
ProcessorStatus close(PolarizationProcessor*&) { return terminate(); }
ProcessorStatus get(PolarizationProcessor* handle) { return get_weights(handle, weights); }
ProcessorStatus set(PolarizationProcessor* handle) { return set_weights(handle, weights); }
ProcessorStatus run(PolarizationProcessor* handle) { return transform_small_frame(handle).first; }

constexpr ProcessorStatus ok = kv_status_ok;
constexpr ProcessorStatus closed = kv_status_not_initialized;
constexpr ProcessorStatus null_handle = kv_status_null_handle;

const Events kModulesCome{"load avx512", "initialize avx512", "load avx2", "initialize avx2"};
const Events kModulesGo{"terminate avx2", "unload avx2", "terminate avx512", "unload avx512"};

const std::vector<Step> kClosed{
    {create, closed}, {destroy, closed}, {get, closed}, {set, closed}, {run, closed}};

// Of the module before its first life, with a processor that outlives it, and in its second life.
const std::vector<std::vector<Step>> kStory{
    {{close, ok}},
    kClosed,
    {{open, ok, kLoggerComes},
     {open, ok},
     {close, ok},
     {run, null_handle, kNullHandleToTransform},
     {get, null_handle, error_line("get_custom_calibration_coefficients", kNullHandle)},
     {set, null_handle, error_line("set_custom_calibration_coefficients", kNullHandle)},
     {destroy, null_handle,
      error_line("destroy_polarization_processor",
                 "ERROR:  The specified color processor handle is NULL!")},
     {create, ok, kModulesCome},
     {close, ok, kLoggerGoes}},
    kClosed,
    {{close, ok},
     {open, ok, kLoggerComes},
     {get, ok},
     {set, ok},
     {run, ok, timing_line()},
     {destroy, ok, kModulesGo},
     {close, ok, kLoggerGoes}},
};

TEST(Lifecycle, StatusAndEventsOfEachStep) {
  // Modules that come and go, and get no frame whatever the processor.
  set_platform({{"initialize avx512", Fault::fails}, {"initialize avx2", Fault::fails}});
  PolarizationProcessor* handle = nullptr;
  for (std::size_t chapter = 0; chapter < kStory.size(); ++chapter) {
    for (std::size_t step = 0; step < kStory[chapter].size(); ++step) {
      SCOPED_TRACE(testing::Message() << "chapter " << chapter << ", step " << step);
      const auto& [call, status, events] = kStory[chapter][step];
      PolarizationProcessor* const before = handle;
      EXPECT_EQ(call(handle), status);
      EXPECT_EQ(take_events(), events);
      EXPECT_TRUE(status == ok || handle == before);
    }
  }
}

// The thread sanitizer makes more of it.
TEST(Threads, ShareAProcessorAndLiveLivesOfTheirOwn) {
  ProcessorOfTier shared(CpuTier::baseline,
                         {{"initialize avx512", Fault::fails}, {"avx2", Fault::missing}});
  // An unpolarized frame becomes a plane of zeros.
  const std::vector<std::uint16_t> samples(37 * 9, 1000), zeros(37 * 9, 0);
  const auto live = [&] {
    for (int i = 0; i < 20; ++i) {
      const Processor own;
      for (PolarizationProcessor* const handle : {own.handle(), &shared.processor}) {
        std::vector<std::uint16_t> dolp(37 * 9, 7);
        transform(handle, {.input = samples.data(), .width = 37, .height = 9, .dolp = dolp.data()});
        EXPECT_EQ(dolp, zeros);
      }
    }
  };
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) threads.emplace_back(live);
  for (std::thread& thread : threads) thread.join();

  Events events = take_events();
  EXPECT_EQ(std::ranges::count(events, "terminate avx512"), 80);
  EXPECT_EQ(std::erase_if(events, [](const auto& event) { return event.starts_with("qrm_log 7"); }),
            160);
  EXPECT_EQ(events.size(), 320u) << "no logger comes or goes";
}

}  // namespace
}  // namespace kv::test
