// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#if defined(_MSC_VER)
#include <intrin.h>
#endif

// The instructions themselves, and not the compiler's intrinsics: g++ takes a function of nothing
// but prefetches for one without effect, and leaves its calls out.
namespace kv {
namespace {

/// Asks for the line of `address`. A hint: any address will do.
inline void prefetch_for_reading(const char* address) {
#if defined(_MSC_VER)
  _mm_prefetch(address, _MM_HINT_T0);
#else
  __asm__ volatile("prefetcht0 %0" : : "m"(*address));
#endif
}

/// The same, in the state that a store needs. A processor without the instruction skips it.
inline void prefetch_for_writing(const char* address) {
#if defined(_MSC_VER)
  _m_prefetchw(address);
#else
  __asm__ volatile("prefetchw %0" : : "m"(*address));
#endif
}

}  // namespace
}  // namespace kv
