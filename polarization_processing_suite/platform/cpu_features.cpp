// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "platform/cpu_features.h"

#if defined(_MSC_VER)
#include <intrin.h>
#else
#include <cpuid.h>
#endif

namespace kv {
namespace {

struct CpuidResult {
  std::uint32_t eax, ebx, ecx, edx;
};

/// The bare instruction: a look at the highest supported leaf before it would double the time of
/// the probe, and in virtual machines each execution takes microseconds.
CpuidResult cpuid(std::uint32_t leaf) {
  CpuidResult result;
#if defined(_MSC_VER)
  int registers[4];
  __cpuidex(registers, static_cast<int>(leaf), 0);
  result = {static_cast<std::uint32_t>(registers[0]), static_cast<std::uint32_t>(registers[1]),
            static_cast<std::uint32_t>(registers[2]), static_cast<std::uint32_t>(registers[3])};
#else
  __cpuid_count(leaf, 0, result.eax, result.ebx, result.ecx, result.edx);
#endif
  return result;
}

std::uint32_t read_enabled_states() {
#if defined(_MSC_VER)
  return static_cast<std::uint32_t>(_xgetbv(0));
#else
  std::uint32_t low, high;
  __asm__ volatile("xgetbv" : "=a"(low), "=d"(high) : "c"(0));
  return low;
#endif
}

constexpr bool has_all(std::uint32_t value, std::uint32_t bits) { return (value & bits) == bits; }

constexpr std::uint32_t bit(unsigned position) { return std::uint32_t{1} << position; }

// CPUID leaf 1, EDX.
constexpr std::uint32_t kSse = bit(25);
constexpr std::uint32_t kSse2 = bit(26);
// CPUID leaf 1, ECX.
constexpr std::uint32_t kFma = bit(12);
constexpr std::uint32_t kSse41 = bit(19);
constexpr std::uint32_t kOsxsave = bit(27);
constexpr std::uint32_t kAvx = bit(28);
// CPUID leaf 7, EBX.
constexpr std::uint32_t kAvx2 = bit(5);
constexpr std::uint32_t kAvx512FDqBw = bit(16) | bit(17) | bit(30);
// XCR0: xmm together with the upper halves of ymm, and what AVX-512 adds to them.
constexpr std::uint32_t kAvxStates = 0x06;
constexpr std::uint32_t kAvx512States = 0xE0;

bool states_enabled(const CpuRegisters& registers, std::uint32_t states) {
  return has_all(registers.leaf_1_ecx, kOsxsave | kAvx) &&
         has_all(registers.enabled_states, states);
}

}  // namespace

CpuRegisters read_cpu_registers() {
  const std::uint32_t leaf_1_ecx = cpuid(1).ecx;
  // Without OSXSAVE the instruction that reads XCR0 is an invalid one.
  return {.highest_leaf = cpuid(0).eax,
          .leaf_1_ecx = leaf_1_ecx,
          .leaf_7_ebx = cpuid(7).ebx,
          .enabled_states = has_all(leaf_1_ecx, kOsxsave) ? read_enabled_states() : 0};
}

CpuTier cpu_tier_of(const CpuRegisters& registers) {
  if (states_enabled(registers, kAvx512States) && has_all(registers.leaf_7_ebx, kAvx512FDqBw)) {
    return CpuTier::avx512;
  }
  const bool avx2 = has_all(registers.leaf_7_ebx, kAvx2);
  return avx2 && has_all(registers.leaf_1_ecx, kFma) ? CpuTier::avx2 : CpuTier::baseline;
}

bool avx2_runnable(const CpuRegisters& registers) {
  return registers.highest_leaf >= 7 && states_enabled(registers, kAvxStates) &&
         has_all(registers.leaf_7_ebx, kAvx2);
}

bool avx512_runnable(const CpuRegisters& registers) {
  return registers.highest_leaf >= 7 && states_enabled(registers, kAvxStates | kAvx512States) &&
         has_all(registers.leaf_7_ebx, kAvx2 | kAvx512FDqBw);
}

bool sse_available() { return has_all(cpuid(1).edx, kSse); }

bool sse41_available() { return has_all(cpuid(1).edx, kSse2) && has_all(cpuid(1).ecx, kSse41); }

}  // namespace kv
