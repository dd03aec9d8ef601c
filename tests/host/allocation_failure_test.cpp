// Memory that runs out at each allocation of create and initialize.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <functional>
#include <limits>
#include <new>

#include "core/public_call.h"
#include "fake_platform.h"
#include "polarization_processor/module_state.h"

namespace kv::test {
namespace {

constexpr long kNever = std::numeric_limits<long>::max();

std::atomic<long> until_failure = kNever;
std::atomic<bool> memory_stays_short = false;
std::atomic<long> alive = 0;  ///< Allocations less those given back.

/// Lets the allocation after `successes` further ones fail, that one alone or all from there on,
/// for the length of a scope.
class ShortMemory {
 public:
  ShortMemory(long successes, bool stays_short) {
    memory_stays_short = stays_short;
    until_failure = successes;
  }
  ~ShortMemory() { end(); }
  ShortMemory(const ShortMemory&) = delete;

  static void end() { until_failure = kNever; }
};

bool refused() {
  if (until_failure == kNever || until_failure-- > 0) return false;
  until_failure = memory_stays_short ? 0 : kNever;
  return true;
}

void* allocate(std::size_t size) {
  while (true) {
    if (void* const memory = refused() ? nullptr : std::malloc(size)) {
      ++alive;
      return memory;
    }
    const std::new_handler handler = std::get_new_handler();
    if (handler == nullptr) throw std::bad_alloc();
    handler();
  }
}

void release(void* memory) {
  if (memory != nullptr) --alive;
  std::free(memory);
}

}  // namespace
}  // namespace kv::test

// All forms of new and delete end in these.
void* operator new(std::size_t size) { return kv::test::allocate(size); }
void operator delete(void* memory) noexcept { kv::test::release(memory); }
void operator delete(void* memory, std::size_t) noexcept { kv::test::release(memory); }

namespace kv::test {
namespace {

/// What has been loaded is unloaded, and what has been initialised is terminated.
void expect_companions_released(const Events& events) {
  const auto count = [&](const std::string& event) { return std::ranges::count(events, event); };
  for (const std::string companion : {"logger", "avx512", "avx2"}) {
    EXPECT_EQ(count("load " + companion), count("unload " + companion));
    EXPECT_EQ(count("initialize " + companion), count("terminate " + companion));
  }
}

/// Calls with ever more allocations that succeed, until all do. After each failed call nothing is
/// to be left of it, and `expect_failed` looks at the events of it.
void fail_at_each_allocation(const FakePlatform& platform, bool stays_short,
                             const std::function<bool()>& call,
                             const std::function<void(const Events&)>& expect_failed) {
  for (long successes = 0; successes < 100; ++successes) {
    SCOPED_TRACE("after " + std::to_string(successes) + " allocations");
    const long before = alive;
    bool succeeded;
    {
      const ShortMemory short_memory(successes, stays_short);
      succeeded = call();
    }
    if (succeeded) {
      EXPECT_GE(successes, 3) << "a record and names";
      return;
    }
    EXPECT_EQ(alive, before);
    const Events events = platform.take_events();
    expect_companions_released(events);
    expect_failed(events);
  }
  FAIL() << "the call does not succeed";
}

TEST(AllocationFailure, InCreate) {
  for (const bool stays_short : {false, true}) {
    const OpenModule module;
    PolarizationProcessor* handle = no_handle();
    ProcessorStatus status;
    const auto call = [&] { return (status = create(handle)) == kv_status_ok; };
    fail_at_each_allocation(module, stays_short, call, [&](const Events& events) {
      EXPECT_EQ(status, kv_status_out_of_memory);
      EXPECT_EQ(handle, no_handle());
      // The line needs memory too.
      EXPECT_EQ(!events.empty() && events.back() == kNoMemoryToCreate[0], !stays_short);
    });
    EXPECT_EQ(destroy(handle), kv_status_ok);
  }
}

TEST(AllocationFailure, InInitialize) {
  for (const bool stays_short : {false, true}) {
    const FakePlatform platform;
    const auto call = [] {
      try {
        return initialize() == kv_status_ok;
      } catch (const std::bad_alloc&) {
        module_mutex().unlock();  // A failed initialize leaves it taken.
        return false;
      }
    };
    fail_at_each_allocation(platform, stays_short, call, [](const Events&) {});
    EXPECT_EQ(terminate(), kv_status_ok);
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
  const OpenModule module({{"avx512", Fault::missing}, {"avx2", Fault::missing}});
  for (const Handling& handling : std::vector<Handling>{
           {[] { count_to_three([] { throw std::bad_alloc(); }); }, kv_status_out_of_memory,
            kNoMemoryToCreate},
           {[] { count_to_three([] { throw 5; }); }, kv_status_general_failure,
            kUnknownErrorToCreate},
           {[] { count_to_three([] {}); }, kv_status_ok, {}},
       }) {
    handler_calls = 0;
    PolarizationProcessor* handle = nullptr;
    ProcessorStatus status;
    const std::new_handler before = std::set_new_handler(handling.handler);
    {
      const ShortMemory short_memory(0, true);
      status = create(handle);
    }
    std::set_new_handler(before);
    EXPECT_EQ(status, handling.status);
    EXPECT_EQ(handler_calls, 3);
    EXPECT_EQ(module.take_events(), handling.logged);
    delete handle;
  }
}

}  // namespace
}  // namespace kv::test
