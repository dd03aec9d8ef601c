// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

// What the registers of a processor say of it, and that those of this one are read.
#include "platform/cpu_features.h"

#include <gtest/gtest.h>

#include <cstdlib>

#include "fake_platform.h"
#include "processor_flags.h"

namespace kv::test {
namespace {

using enum CpuTier;

struct Lack {
  const char* name;
  CpuRegisters bits;  ///< That are 0; all others are 1.
  CpuTier tier;
  bool avx2_runs;
  bool avx512_runs;
};

// Leaf 1: FMA is bit 12, OSXSAVE 27, AVX 28. Leaf 7: AVX2 is bit 5, AVX512F 16, DQ 17, BW 30. XCR0:
// SSE is bit 1, AVX 2, the three states of AVX-512 5 to 7.
constexpr Lack kLacks[]{
    {"nothing", {0, 0, 0, 0}, avx512, true, true},
    {"all that is of no use", {8, ~0x1800'1000u, ~0x4003'0020u, ~0xE6u}, avx512, true, true},
    {"everything", {0, ~0u, ~0u, ~0u}, baseline, false, false},
    // The tier does not ask for it.
    {"leaf 7", {9, 0, 0, 0}, avx512, false, false},
    {"FMA", {0, 1u << 12, 0, 0}, avx512, true, true},
    // For AVX2 the tier is what the processor offers, enabled or not.
    {"OSXSAVE", {0, 1u << 27, 0, 0}, avx2, false, false},
    {"AVX", {0, 1u << 28, 0, 0}, avx2, false, false},
    {"AVX2", {0, 0, 1u << 5, 0}, avx512, false, false},
    {"AVX512F", {0, 0, 1u << 16, 0}, avx2, true, false},
    {"AVX512DQ", {0, 0, 1u << 17, 0}, avx2, true, false},
    {"AVX512BW", {0, 0, 1u << 30, 0}, avx2, true, false},
    {"SSE state", {0, 0, 0, 0x02}, avx512, false, false},
    {"AVX state", {0, 0, 0, 0x04}, avx512, false, false},
    {"opmask state", {0, 0, 0, 0x20}, avx2, true, false},
    {"upper zmm state", {0, 0, 0, 0x40}, avx2, true, false},
    {"high zmm state", {0, 0, 0, 0x80}, avx2, true, false},
    {"AVX-512 and FMA", {0, 1u << 12, 0x4003'0000, 0}, baseline, true, false},
    {"AVX-512 and AVX2", {0, 0, 0x4003'0020, 0}, baseline, false, false},
};

TEST(CpuFeatures, OfRegisterValues) {
  for (const Lack& lack : kLacks) {
    SCOPED_TRACE(lack.name);
    const CpuRegisters registers{15u & ~lack.bits.highest_leaf, ~lack.bits.leaf_1_ecx,
                                 ~lack.bits.leaf_7_ebx, ~lack.bits.enabled_states};
    EXPECT_EQ(cpu_tier_of(registers), lack.tier);
    EXPECT_EQ(avx2_runnable(registers), lack.avx2_runs);
    EXPECT_EQ(avx512_runnable(registers), lack.avx512_runs);
  }
}

/// What this processor is known to be, by the module that gets its frames: by the environment for
/// an emulated one, else by the system.
std::optional<std::string> known_tier() {
  if (const char* const tier = std::getenv("KV_EXPECTED_TIER")) return tier;
  const auto flags = processor_flags();
  if (!flags) return std::nullopt;
  const auto has = [&](const char* flag) { return flags->contains(flag); };
  if (has("avx512f") && has("avx512dq") && has("avx512bw")) return "avx512";
  return has("avx2") && has("fma") ? "avx2" : "";
}

TEST(CpuFeatures, OfThisProcessorDecideOnTheModuleOfItsFrames) {
  const auto known = known_tier();
  if (!known) GTEST_SKIP() << "this system does not tell what its processor has";
  set_platform({{"logger", Fault::missing}});
  const Processor processor;
  take_events();
  transform_small_frame(processor.handle());
  EXPECT_EQ(take_events(), known->empty() ? Events{} : Events{"transform " + *known});
}

}  // namespace
}  // namespace kv::test
