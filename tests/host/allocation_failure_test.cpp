// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

// Memory that runs out at each allocation of create and initialize.
#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <functional>
#include <new>

#include "fake_platform.h"
#include "polarization_processor/module_state.h"

namespace {

constexpr long kAll = 1'000'000;

std::atomic<long> attempts = 0;
std::atomic<long> first_failure = 0;
std::atomic<long> failures_end = 0;
std::atomic<long> alive = 0;  ///< Allocations less those given back.

/// Of the attempts to come the first `successes` succeed, and the next `failures` fail.
void let_memory_run_out(long successes, long failures) {
  first_failure = attempts + successes;
  failures_end = first_failure + failures;
}

}  // namespace

// All forms of new and delete end in these.
void* operator new(std::size_t size) {
  for (long attempt = attempts++; first_failure <= attempt && attempt < failures_end;
       attempt = attempts++) {
    const std::new_handler handler = std::get_new_handler();
    if (handler == nullptr) throw std::bad_alloc();
    handler();
  }
  ++alive;
  return std::malloc(size);
}
void operator delete(void* memory) noexcept {
  if (memory != nullptr) --alive;
  std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept { operator delete(memory); }

namespace kv::test {
namespace {

/// Calls with ever more allocations that succeed, until all do and the call undoes what it did.
/// Nothing is left of a failed call but `line`, unless memory stays short: the line needs some too.
void fail_at_each_allocation(const std::function<bool()>& call, const Events& line) {
  for (const long failures : {1L, kAll}) {
    bool succeeded = false;
    for (long successes = 0; !succeeded; ++successes) {
      SCOPED_TRACE(testing::Message() << failures << " failures after " << successes);
      ASSERT_LT(successes, 100) << "the call does not succeed";
      const long before = alive;
      let_memory_run_out(successes, failures);
      succeeded = call();
      let_memory_run_out(0, 0);
      EXPECT_EQ(alive, before);
      EXPECT_TRUE(!succeeded || successes >= 3) << "there are a record and names";
      Events events = take_events();
      const auto erase = [&](const char* act) {
        return std::erase_if(events, [&](auto& event) { return event.starts_with(act); });
      };
      EXPECT_EQ(erase("load "), erase("unload "));
      EXPECT_EQ(erase("initialize "), erase("terminate "));
      EXPECT_EQ(erase("qrm_get_log "), erase("qrm_free_log "));
      EXPECT_EQ(events, succeeded || failures == kAll ? Events{} : line);
    }
  }
}

TEST(AllocationFailure, InCreate) {
  const OpenModule module;
  const auto call = [] {
    PolarizationProcessor* handle = kNoHandle;
    const ProcessorStatus status = create(handle);
    let_memory_run_out(0, 0);  // The expectations need memory.
    if (status == kv_status_ok) return destroy(handle) == kv_status_ok;
    EXPECT_EQ(status, kv_status_out_of_memory);
    EXPECT_EQ(handle, kNoHandle);
    return false;
  };
  fail_at_each_allocation(
      call, error_line("create_polarization_processor",
                       "Memory allocation failure when trying to create a polar processor "
                       "instance!"));
}

TEST(AllocationFailure, InInitialize) {
  set_platform();
  const auto call = [] {
    try {
      return initialize() == kv_status_ok && terminate() == kv_status_ok;
    } catch (const std::bad_alloc&) {
      module_mutex().unlock();  // A failed initialize leaves it taken.
      return false;
    }
  };
  fail_at_each_allocation(call, {});
}

int handler_calls = 0;

TEST(NewHandler, IsAskedUntilThereIsMemory) {
  const OpenModule module({{"avx512", Fault::missing}, {"avx2", Fault::missing}});
  PolarizationProcessor* handle = nullptr;
  const std::new_handler before = std::set_new_handler([] { ++handler_calls; });
  let_memory_run_out(0, 3);
  EXPECT_EQ(create(handle), kv_status_ok);
  std::set_new_handler(before);
  EXPECT_EQ(handler_calls, 3);
  EXPECT_EQ(destroy(handle), kv_status_ok);
}

}  // namespace
}  // namespace kv::test
