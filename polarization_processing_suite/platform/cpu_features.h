// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>

namespace kv {

/// What the processor and the operating system offer beyond the library's own kernels.
enum class CpuTier : std::uint32_t { baseline = 0, avx2 = 1, avx512 = 2 };

/// The registers that tell of instruction sets.
struct CpuRegisters {
  std::uint32_t highest_leaf;  ///< Of CPUID. Leaf 7 holds nothing of use where this is less.
  std::uint32_t leaf_1_ecx;
  std::uint32_t leaf_7_ebx;
  std::uint32_t enabled_states;  ///< Low half of XCR0; 0 where the system does not use it.
};

CpuRegisters read_cpu_registers();

/// The tier of an instance. For AVX2 it is what the processor offers, whether or not the operating
/// system has enabled it; for AVX-512 the system counts too.
CpuTier cpu_tier_of(const CpuRegisters& registers);

/// Whether code of the instruction sets can run: the processor has them and the operating system
/// saves their registers.
bool avx2_runnable(const CpuRegisters& registers);
bool avx512_runnable(const CpuRegisters& registers);

bool sse_available();

/// Asks the processor anew at every call, by one or two executions of CPUID.
bool sse41_available();

}  // namespace kv
