#pragma once

#include <cstdint>

namespace kv {

/// What the processor and the operating system offer beyond the library's own kernels.
enum class CpuTier : std::uint32_t { baseline = 0, avx2 = 1, avx512 = 2 };

bool sse_available();

/// Asks the processor anew at every call.
bool sse41_available();

/// The tier of an instance. For AVX2 it asks what the processor offers, and not whether the
/// operating system has enabled it.
CpuTier detect_cpu_tier();

/// Whether code of the instruction sets can run: the processor has them and the operating system
/// saves their registers.
bool avx2_runnable();
bool avx512_runnable();

}  // namespace kv
