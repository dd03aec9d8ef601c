#pragma once

#if defined(_MSC_VER)
#include <intrin.h>
#endif

// In an unnamed namespace for the reason told in float4.h.
namespace kv {
namespace {

/// Asks for the line of `address` in the state that a store needs. A hint: any address will do, and
/// a processor without the instruction skips it.
inline void prefetch_for_writing(const char* address) {
#if defined(_MSC_VER)
  _m_prefetchw(address);
#else
  // Not the compiler's intrinsic: g++ takes a function of nothing but prefetches for one without
  // effect, and leaves its calls out.
  __asm__ volatile("prefetchw %0" : : "m"(*address));
#endif
}

}  // namespace
}  // namespace kv
