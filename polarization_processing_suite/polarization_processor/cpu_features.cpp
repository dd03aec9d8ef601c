#include "cpu_features.h"

#include <cstdint>

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
CpuidResult cpuid(std::uint32_t leaf, std::uint32_t subleaf) {
  CpuidResult result;
#if defined(_MSC_VER)
  int registers[4];
  __cpuidex(registers, static_cast<int>(leaf), static_cast<int>(subleaf));
  result = {static_cast<std::uint32_t>(registers[0]), static_cast<std::uint32_t>(registers[1]),
            static_cast<std::uint32_t>(registers[2]), static_cast<std::uint32_t>(registers[3])};
#else
  __cpuid_count(leaf, subleaf, result.eax, result.ebx, result.ecx, result.edx);
#endif
  return result;
}

/// Low half of XCR0: the register states that the operating system saves.
std::uint32_t enabled_states() {
#if defined(_MSC_VER)
  return static_cast<std::uint32_t>(_xgetbv(0));
#else
  std::uint32_t low, high;
  __asm__ volatile("xgetbv" : "=a"(low), "=d"(high) : "c"(0));
  return low;
#endif
}

constexpr bool bit(std::uint32_t value, unsigned position) { return (value >> position & 1u) != 0; }

/// In XCR0: the halves of ymm registers together with xmm, and what AVX-512 adds to them.
constexpr std::uint32_t kAvxStates = 0x06;
constexpr std::uint32_t kAvx512States = 0xE0;

bool states_enabled(std::uint32_t states) {
  const std::uint32_t ecx = cpuid(1, 0).ecx;
  return bit(ecx, 27) && bit(ecx, 28) && (enabled_states() & states) == states;  // OSXSAVE, AVX
}

bool has_leaf_7() { return cpuid(0, 0).eax >= 7; }

bool offers_avx2() { return bit(cpuid(7, 0).ebx, 5); }

bool offers_avx512() {
  const std::uint32_t ebx = cpuid(7, 0).ebx;
  return bit(ebx, 16) && bit(ebx, 17) && bit(ebx, 30);  // AVX512F, AVX512DQ, AVX512BW
}

}  // namespace

bool sse_available() { return bit(cpuid(1, 0).edx, 25); }

bool sse41_available() {
  const bool sse2 = bit(cpuid(1, 0).edx, 26);
  return sse2 && bit(cpuid(1, 0).ecx, 19);
}

CpuTier detect_cpu_tier() {
  if (states_enabled(kAvx512States) && offers_avx512()) return CpuTier::avx512;
  const bool fma = bit(cpuid(1, 0).ecx, 12);
  if (offers_avx2() && fma) return CpuTier::avx2;
  return CpuTier::baseline;
}

bool avx2_runnable() { return has_leaf_7() && states_enabled(kAvxStates) && offers_avx2(); }

bool avx512_runnable() {
  return has_leaf_7() && states_enabled(kAvxStates | kAvx512States) && offers_avx512() &&
         offers_avx2();
}

}  // namespace kv
