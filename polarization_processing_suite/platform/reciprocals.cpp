// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "platform/reciprocals.h"

#include <immintrin.h>

#include <array>
#include <bit>
#include <cstdint>

namespace kv::platform {

std::string reciprocal_table() {
  constexpr std::uint32_t one = 0x3F800000;
  constexpr std::uint32_t step = 1U << 10;  // of 2^23 mantissas
  std::string table;
  for (std::uint32_t i = 0; i < 8192; ++i) {
    const float number = std::bit_cast<float>(one + i * step);
    const float reciprocal = _mm_cvtss_f32(_mm_rcp_ss(_mm_set_ss(number)));
    const auto bytes = std::bit_cast<std::array<char, 4>>(reciprocal);
    table.append(bytes.data(), bytes.size());
  }
  return table;
}

}  // namespace kv::platform
