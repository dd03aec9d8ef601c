// Threads that share the module, and a processor. The thread sanitizer makes more of it.
#include <gtest/gtest.h>

#include <algorithm>
#include <thread>

#include "host.h"

namespace kv::test {
namespace {

template <class Act>
void in_threads(Act act) {
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) threads.emplace_back(act);
  for (std::thread& thread : threads) thread.join();
}

TEST(Threads, TransformOnOneProcessor) {
  const Host host({.logger = "complete", .avx512 = {}, .avx2 = {}});
  PolarizationProcessor* handle = nullptr;
  ASSERT_EQ(host.initialize(), kv_status_ok);
  ASSERT_EQ(host.create(handle), kv_status_ok);
  constexpr std::int32_t kWidth = 37;
  constexpr std::int32_t kHeight = 9;
  constexpr std::size_t kPixels = kWidth * kHeight;
  const std::vector<std::uint16_t> samples(kPixels, kSample);
  in_threads([&] {
    for (int i = 0; i < 20; ++i) {
      std::vector<std::uint16_t> dolp(kPixels, kUntouched);
      EXPECT_EQ(host.transform(handle, {.input = samples.data(),
                                        .width = kWidth,
                                        .height = kHeight,
                                        .intensity = nullptr,
                                        .dolp = dolp.data()}),
                kv_status_ok);
      EXPECT_EQ(dolp, std::vector<std::uint16_t>(kPixels, 0));
    }
  });
  EXPECT_EQ(host.destroy(handle), kv_status_ok);
  EXPECT_EQ(host.terminate(), kv_status_ok);
}

TEST(Threads, LiveWholeLivesAtTheSameTime) {
  const Host host(kAllCompanions);
  ASSERT_EQ(host.initialize(), kv_status_ok);
  in_threads([&] {
    for (int i = 0; i < 20; ++i) {
      PolarizationProcessor* handle = nullptr;
      Frame frame;
      EXPECT_EQ(host.initialize(), kv_status_ok);
      EXPECT_EQ(host.create(handle), kv_status_ok);
      EXPECT_EQ(host.transform(handle, frame.arguments()), kv_status_ok);
      EXPECT_EQ(host.destroy(handle), kv_status_ok);
      EXPECT_EQ(host.terminate(), kv_status_ok);
    }
  });
  EXPECT_EQ(host.terminate(), kv_status_ok);
  const Events all = events();
  const auto count = [&](const std::string& event) {
    return std::count(all.begin(), all.end(), event);
  };
  for (const std::string set : {"avx512", "avx2"}) {
    EXPECT_EQ(count("initialize " + set), 80);
    EXPECT_EQ(count("terminate " + set), 80);
    EXPECT_EQ(count("load " + set), count("unload " + set));
  }
  EXPECT_EQ(count(kLoggerComes[1]), 1);
  EXPECT_EQ(all.back(), kLoggerGoes[1]);
}

}  // namespace
}  // namespace kv::test
