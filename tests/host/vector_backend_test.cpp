// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

// The optional vector modules: how they are bound and released, and which frames they get.
#include <gtest/gtest.h>

#include "fake_platform.h"

namespace kv::test {
namespace {

/// What a module of some instruction set is like, and what follows from it.
struct State {
  std::string faulty;  ///< A function but for the set, which the name ends in; alone, the library.
  Fault fault;
  std::vector<std::string> comes;
  std::vector<std::string> goes;
  bool usable;
};

const State kStates[]{
    {"no function ", Fault::missing, {"load ", "initialize "}, {"terminate ", "unload "}, true},
    {"initialize ", Fault::fails, {"load ", "initialize "}, {"terminate ", "unload "}, false},
    {"initialize ", Fault::missing, {"load "}, {"unload "}, false},
    {"transform ", Fault::missing, {"load "}, {"unload "}, false},
    {"terminate ", Fault::missing, {"load "}, {"unload "}, false},
    {"", Fault::missing, {}, {}, false},
};

Events of(const std::vector<std::string>& acts, const char* set) {
  Events events;
  for (const std::string& act : acts) events.push_back(act + set);
  return events;
}

/// The module of the tier's own set gets the frames, if it is usable; there is no chain of tiers.
void expect_binding_routing_and_release(const State& avx512, const State& avx2, CpuTier tier) {
  const OpenModule module(
      {{avx512.faulty + "avx512", avx512.fault}, {avx2.faulty + "avx2", avx2.fault}});
  auto* const handle = new PolarizationProcessor(tier);
  EXPECT_EQ(take_events(), of(avx512.comes, "avx512") + of(avx2.comes, "avx2"));

  Events handed_over;
  if (tier == CpuTier::avx512 && avx512.usable) handed_over = {"transform avx512"};
  if (tier == CpuTier::avx2 && avx2.usable) handed_over = {"transform avx2"};
  // The fakes write nothing, and the library does not touch a frame that it has handed over.
  EXPECT_EQ(transform_small_frame(handle),
            Transformed(kv_status_ok, handed_over.empty() ? 500 : 7));
  EXPECT_EQ(take_events(), handed_over + timing_line());

  EXPECT_EQ(destroy(handle), kv_status_ok);
  EXPECT_EQ(take_events(), of(avx2.goes, "avx2") + of(avx512.goes, "avx512"));
}

TEST(VectorBackend, BindingRoutingAndRelease) {
  for (const State& avx512 : kStates) {
    for (const State& avx2 : kStates) {
      for (const CpuTier tier : {CpuTier::baseline, CpuTier::avx2, CpuTier::avx512}) {
        SCOPED_TRACE("avx512: " + avx512.faulty + ", avx2: " + avx2.faulty);
        expect_binding_routing_and_release(avx512, avx2, tier);
      }
    }
  }
}

// A module whose initialize throws is not torn down: its state is unknown.
TEST(VectorBackend, AThrowingInitializeFailsCreate) {
  const Events first{"load avx512", "initialize avx512"};
  const Events second{"load avx2", "initialize avx2", "terminate avx512", "unload avx512"};
  const Events line =
      error_line("create_polarization_processor",
                 "An unknown error occurred when trying to create a polar_processor instance!");
  for (const auto& [module_function, events] :
       {std::pair("initialize avx512", first), std::pair("initialize avx2", first + second)}) {
    const OpenModule module({{module_function, Fault::throws}});
    PolarizationProcessor* handle = kNoHandle;
    EXPECT_EQ(create(handle), kv_status_general_failure);
    EXPECT_EQ(handle, kNoHandle);
    EXPECT_EQ(take_events(), events + line);
  }
}

TEST(VectorBackendDeathTest, AThrowingTerminateEndsTheProcess) {
  const OpenModule module({{"terminate avx2", Fault::throws}});
  // Nobody could destroy it without ending the process; static, it is no leak.
  static PolarizationProcessor* handle = nullptr;
  ASSERT_EQ(create(handle), kv_status_ok);
  EXPECT_DEATH(destroy(handle), "");
}

}  // namespace
}  // namespace kv::test
