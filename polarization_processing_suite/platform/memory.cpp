// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "platform/memory.h"

#include <immintrin.h>

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace kv::platform {

void copy_past_caches(void* to, const void* from, std::size_t bytes) {
  // Whole lines alone: a line that is written in parts, and past the caches, costs several times as
  // much.
  constexpr std::size_t line = 64;
  auto* target = static_cast<std::byte*>(to);
  const auto* source = static_cast<const std::byte*>(from);
  const std::size_t head = std::min(bytes, (0 - reinterpret_cast<std::uintptr_t>(target)) % line);
  std::memcpy(target, source, head);
  std::size_t done = head;
  for (; bytes - done >= line; done += line) {
    for (std::size_t part = 0; part < line; part += sizeof(__m128i)) {
      const auto* quarter = reinterpret_cast<const __m128i*>(source + done + part);
      _mm_stream_si128(reinterpret_cast<__m128i*>(target + done + part), _mm_loadu_si128(quarter));
    }
  }
  std::memcpy(target + done, source + done, bytes - done);
}

void finish_copies() { _mm_sfence(); }

}  // namespace kv::platform
