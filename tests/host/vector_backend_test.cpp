// The optional vector modules: how they are bound and released, and which frames they get.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <set>

#include "host.h"
#include "processor_flags.h"

namespace kv::test {
namespace {

/// The instruction set whose module gets the frames on this processor, empty for none: that of a
/// processor that has all modules.
std::string own_tier() {
  const Host host(kAllCompanions);
  PolarizationProcessor* handle = nullptr;
  Frame frame;
  host.initialize();
  host.create(handle);
  host.transform(handle, frame.arguments());
  const Events all = events();
  host.destroy(handle);
  host.terminate();
  for (const char* set : {"avx512", "avx2"}) {
    if (std::find(all.begin(), all.end(), std::string("transform ") + set) != all.end()) return set;
  }
  return "";
}

/// What the processor is known to be: by the environment for an emulated one, else by the system.
std::optional<std::string> known_tier() {
  if (const char* const tier = std::getenv("KV_EXPECTED_TIER")) return tier;
  const auto flags = processor_flags();
  if (!flags) return std::nullopt;
  const auto has = [&](const char* flag) { return flags->contains(flag); };
  if (has("avx512f") && has("avx512dq") && has("avx512bw")) return "avx512";
  return has("avx2") && has("fma") ? "avx2" : "";
}

TEST(VectorBackend, TierIsThatOfTheProcessor) {
  const auto known = known_tier();
  if (!known) GTEST_SKIP() << "this system does not tell what its processor has";
  EXPECT_EQ(own_tier(), *known);
}

struct Situation {
  std::string avx512;  ///< Variants, as in Companions.
  std::string avx2;
  std::vector<Function> failing;
  Events on_create;
  std::set<std::string> usable;
  Events on_destroy;
};

std::vector<Situation> situations() {
  std::vector<Situation> all{
      {"", "", {}, {}, {}, {}},
      {"complete",
       "complete",
       {},
       {"load avx512", "initialize avx512", "load avx2", "initialize avx2"},
       {"avx512", "avx2"},
       {"terminate avx2", "unload avx2", "terminate avx512", "unload avx512"}},
      {"complete",
       "complete",
       {Function::initialize_avx512},
       {"load avx512", "initialize avx512", "load avx2", "initialize avx2"},
       {"avx2"},
       {"terminate avx2", "unload avx2", "terminate avx512", "unload avx512"}},
      {"complete",
       "complete",
       {Function::initialize_avx2},
       {"load avx512", "initialize avx512", "load avx2", "initialize avx2"},
       {"avx512"},
       {"terminate avx2", "unload avx2", "terminate avx512", "unload avx512"}},
  };
  // One of them alone, whole or lacking an export.
  for (const std::string set : {"avx512", "avx2"}) {
    const auto alone = [&](const char* variant, const Events& on_create,
                           const std::set<std::string>& usable, const Events& on_destroy) {
      all.push_back({set == "avx512" ? variant : "",
                     set == "avx2" ? variant : "",
                     {},
                     on_create,
                     usable,
                     on_destroy});
    };
    alone("complete", {"load " + set, "initialize " + set}, {set},
          {"terminate " + set, "unload " + set});
    for (const char* const missing : {"initialize", "transform"}) {
      alone(missing, {"load " + set}, {}, {"unload " + set});
    }
    alone("terminate", {"load " + set}, {}, {"unload " + set});
  }
  return all;
}

void PrintTo(const Situation& situation, std::ostream* out) {
  *out << "avx512: '" << situation.avx512 << "', avx2: '" << situation.avx2 << "'";
}

class VectorBackends : public testing::TestWithParam<Situation> {};

TEST_P(VectorBackends, BindingRoutingAndTeardown) {
  const std::string tier = own_tier();
  const Situation& situation = GetParam();
  const Host host({.logger = {}, .avx512 = situation.avx512, .avx2 = situation.avx2});
  for (const Function function : situation.failing) set_behaviour(function, Behaviour::fail);
  ASSERT_EQ(host.initialize(), kv_status_ok);

  PolarizationProcessor* handle = nullptr;
  ASSERT_EQ(host.create(handle), kv_status_ok);
  EXPECT_EQ(events(), situation.on_create);

  // The fakes write nothing, and the library does not touch a frame that it has handed over.
  const bool handed_over = situation.usable.contains(tier);
  Frame frame;
  EXPECT_EQ(host.transform(handle, frame.arguments()), kv_status_ok);
  const Events on_transform = handed_over ? Events{"transform " + tier} : Events{};
  EXPECT_EQ(events(), situation.on_create + on_transform);
  for (const std::uint16_t intensity : frame.intensity) {
    EXPECT_EQ(intensity, handed_over ? kUntouched : kIntensity);
  }

  EXPECT_EQ(host.destroy(handle), kv_status_ok);
  EXPECT_EQ(events(), situation.on_create + on_transform + situation.on_destroy);
  EXPECT_EQ(host.terminate(), kv_status_ok);
}

INSTANTIATE_TEST_SUITE_P(Situations, VectorBackends, testing::ValuesIn(situations()));

struct Throw {
  Function function;
  Behaviour behaviour;
  ProcessorStatus status;
  std::string message;
  Events before_message;
};

std::vector<Throw> throws() {
  const std::string no_memory =
      "Memory allocation failure when trying to create a polar processor instance!";
  const std::string unknown =
      "An unknown error occurred when trying to create a polar_processor instance!";
  // A module whose initialize throws is not torn down: its state is unknown.
  const Events first{"load avx512", "initialize avx512"};
  const Events second =
      first + Events{"load avx2", "initialize avx2", "terminate avx512", "unload avx512"};
  return {
      {Function::initialize_avx512, Behaviour::throw_bad_alloc, kv_status_out_of_memory, no_memory,
       first},
      {Function::initialize_avx512, Behaviour::throw_other, kv_status_general_failure, unknown,
       first},
      {Function::initialize_avx2, Behaviour::throw_bad_alloc, kv_status_out_of_memory, no_memory,
       second},
      {Function::initialize_avx2, Behaviour::throw_other, kv_status_general_failure, unknown,
       second},
  };
}

void PrintTo(const Throw& situation, std::ostream* out) { *out << situation.message; }

class ThrowingInitialize : public testing::TestWithParam<Throw> {};

TEST_P(ThrowingInitialize, FailsCreate) {
  const Throw& situation = GetParam();
  const Host host(kAllCompanions);
  set_behaviour(situation.function, situation.behaviour);
  ASSERT_EQ(host.initialize(), kv_status_ok);
  char nowhere;
  auto* const before = reinterpret_cast<PolarizationProcessor*>(&nowhere);
  PolarizationProcessor* handle = before;
  EXPECT_EQ(host.create(handle), situation.status);
  EXPECT_EQ(handle, before);
  EXPECT_EQ(events(), kLoggerComes + situation.before_message +
                          error_line("create_polarization_processor", situation.message));
  EXPECT_EQ(host.terminate(), kv_status_ok);
}

INSTANTIATE_TEST_SUITE_P(VectorBackend, ThrowingInitialize, testing::ValuesIn(throws()));

TEST(ThrowingTerminateDeathTest, EndsTheProcess) {
  const Host host(kAllCompanions);
  ASSERT_EQ(host.initialize(), kv_status_ok);
  PolarizationProcessor* handle = nullptr;
  ASSERT_EQ(host.create(handle), kv_status_ok);
  EXPECT_DEATH(
      {
        set_behaviour(Function::terminate, Behaviour::throw_other);
        host.destroy(handle);
      },
      "");
  EXPECT_EQ(host.destroy(handle), kv_status_ok);
  EXPECT_EQ(host.terminate(), kv_status_ok);
}

}  // namespace
}  // namespace kv::test
