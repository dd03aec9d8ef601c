// Memory that runs out at each allocation of create and initialize.
#include <gtest/gtest.h>

#include <algorithm>
#include <new>

#include "host.h"
#include "short_memory.h"

namespace kv::test {
namespace {

const char kNoMemory[] =
    "Memory allocation failure when trying to create a polar processor instance!";
const char kUnknownError[] =
    "An unknown error occurred when trying to create a polar_processor instance!";

Events create_line(const char* message) {
  return error_line("create_polarization_processor", message);
}

/// What has been loaded is unloaded, and what has been initialised is terminated.
void expect_modules_released(const Events& all) {
  const auto count = [&](const std::string& event) {
    return std::count(all.begin(), all.end(), event);
  };
  for (const std::string set : {"avx512", "avx2"}) {
    EXPECT_EQ(count("load " + set), count("unload " + set));
    EXPECT_EQ(count("initialize " + set), count("terminate " + set));
  }
}

class AllocationFailure : public testing::TestWithParam<bool> {};

INSTANTIATE_TEST_SUITE_P(Memory, AllocationFailure, testing::Bool(), [](const auto& test) {
  return test.param ? "StaysShort" : "IsShortOnce";
});

TEST_P(AllocationFailure, InCreate) {
  const bool stays_short = GetParam();
  const Host host(kAllCompanions);
  ASSERT_EQ(host.initialize(), kv_status_ok);
  char nowhere;
  auto* const before = reinterpret_cast<PolarizationProcessor*>(&nowhere);
  PolarizationProcessor* handle = before;
  long successes = 0;
  for (;; ++successes) {
    SCOPED_TRACE("after " + std::to_string(successes) + " allocations");
    ASSERT_LT(successes, 100);
    reset_recorder();
    const long alive = allocations_alive();
    ProcessorStatus status;
    {
      const ShortMemory short_memory(successes, stays_short);
      status = host.create(handle);
    }
    if (status == kv_status_ok) break;
    EXPECT_EQ(allocations_alive(), alive);
    EXPECT_EQ(status, kv_status_out_of_memory);
    EXPECT_EQ(handle, before);
    const Events all = events();
    expect_modules_released(all);
    const bool logged = !all.empty() && all.back() == create_line(kNoMemory)[0];
    // The line needs memory too.
    EXPECT_EQ(logged, !stays_short);
  }
  EXPECT_GE(successes, 3) << "the processor and the names of two modules";
  EXPECT_EQ(host.destroy(handle), kv_status_ok);
  EXPECT_EQ(host.terminate(), kv_status_ok);
}

// A failed initialize leaves its lock taken, so that each one is the last of its library.
TEST_P(AllocationFailure, InInitialize) {
  for (long successes = 0;; ++successes) {
    ASSERT_LT(successes, 100);
    const Host host(kAllCompanions);
    const long alive = allocations_alive();
    bool failed = false;
    try {
      const ShortMemory short_memory(successes, GetParam());
      host.initialize();
    } catch (const std::bad_alloc&) {
      failed = true;
    }
    if (!failed) {
      EXPECT_GE(successes, 1);
      EXPECT_EQ(host.terminate(), kv_status_ok);
      EXPECT_EQ(allocations_alive(), alive);
      break;
    }
    EXPECT_EQ(allocations_alive(), alive) << "after " << successes << " allocations";
    EXPECT_EQ(host.destroy(nullptr), kv_status_not_initialized);
  }
}

int handler_calls = 0;

/// At its third call there is memory again, and that call decides what becomes of the allocation.
template <class LastAct>
void count_to_three(LastAct last_act) {
  if (++handler_calls < 3) return;
  ShortMemory::end();
  last_act();
}

struct Handling {
  std::new_handler handler;
  ProcessorStatus status;
  Events logged;
};

TEST(NewHandler, IsAskedUntilItGivesUp) {
  const Handling handlings[]{
      {[] { count_to_three([] { throw std::bad_alloc(); }); }, kv_status_out_of_memory,
       create_line(kNoMemory)},
      {[] { count_to_three([] { throw 5; }); }, kv_status_general_failure,
       create_line(kUnknownError)},
      {[] { count_to_three([] {}); }, kv_status_ok, {}},
  };
  const Host host({.logger = "complete", .avx512 = {}, .avx2 = {}});
  ASSERT_EQ(host.initialize(), kv_status_ok);
  for (const Handling& handling : handlings) {
    reset_recorder();
    handler_calls = 0;
    PolarizationProcessor* handle = nullptr;
    const std::new_handler before = std::set_new_handler(handling.handler);
    ProcessorStatus status;
    {
      const ShortMemory short_memory(0, true);
      status = host.create(handle);
    }
    std::set_new_handler(before);
    EXPECT_EQ(status, handling.status);
    EXPECT_EQ(handler_calls, 3);
    EXPECT_EQ(events(), handling.logged);
    if (handle != nullptr) {
      EXPECT_EQ(host.destroy(handle), kv_status_ok);
    }
  }
  EXPECT_EQ(host.terminate(), kv_status_ok);
}

}  // namespace
}  // namespace kv::test
