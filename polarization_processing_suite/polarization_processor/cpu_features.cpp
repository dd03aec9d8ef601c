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

bool avx512_usable() {
  const std::uint32_t ecx = cpuid(1, 0).ecx;
  if (!bit(ecx, 27) || !bit(ecx, 28)) return false;  // OSXSAVE, AVX
  constexpr std::uint32_t kAvx512States = 0xE0;
  if ((enabled_states() & kAvx512States) != kAvx512States) return false;
  const std::uint32_t ebx = cpuid(7, 0).ebx;
  return bit(ebx, 16) && bit(ebx, 17) && bit(ebx, 30);  // AVX512F, AVX512DQ, AVX512BW
}

bool avx2_offered() {
  return bit(cpuid(7, 0).ebx, 5) && bit(cpuid(1, 0).ecx, 12);  // AVX2, FMA
}

}  // namespace

bool sse_available() { return bit(cpuid(1, 0).edx, 25); }

bool sse41_available() {
  const bool sse2 = bit(cpuid(1, 0).edx, 26);
  return sse2 && bit(cpuid(1, 0).ecx, 19);
}

CpuTier detect_cpu_tier() {
  if (avx512_usable()) return CpuTier::avx512;
  if (avx2_offered()) return CpuTier::avx2;
  return CpuTier::baseline;
}

}  // namespace kv
