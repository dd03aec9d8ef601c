// Threads that share the module, and a processor. The thread sanitizer makes more of it.
#include <gtest/gtest.h>

#include <algorithm>
#include <thread>

#include "fake_platform.h"

namespace kv::test {
namespace {

/// An unpolarized frame becomes a plane of zeros.
void expect_transform(PolarizationProcessor* handle) {
  const std::vector<std::uint16_t> samples(37 * 9, 1000);
  std::vector<std::uint16_t> dolp(samples.size(), 7);
  EXPECT_EQ(
      transform(handle, {.input = samples.data(), .width = 37, .height = 9, .dolp = dolp.data()}),
      kv_status_ok);
  EXPECT_EQ(dolp, std::vector<std::uint16_t>(samples.size(), 0));
}

TEST(Threads, ShareAProcessorAndLiveLivesOfTheirOwn) {
  ProcessorOfTier shared(CpuTier::baseline,
                         {{"initialize avx512", Fault::fails}, {"avx2", Fault::missing}});
  const auto live = [&] {
    for (int i = 0; i < 20; ++i) {
      PolarizationProcessor* own = nullptr;
      EXPECT_EQ(initialize(), kv_status_ok);
      EXPECT_EQ(create(own), kv_status_ok);
      expect_transform(own);
      expect_transform(&shared.processor);
      EXPECT_EQ(destroy(own), kv_status_ok);
      EXPECT_EQ(terminate(), kv_status_ok);
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
