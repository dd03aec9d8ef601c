// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "toolkit/simulation/random.h"

#include <cmath>
#include <initializer_list>

namespace kv::polarization {

std::uint64_t random_word(std::uint64_t counter) {
  std::uint64_t word = counter * 0x9E3779B97F4A7C15;
  word = (word ^ (word >> 30)) * 0xBF58476D1CE4E5B9;
  word = (word ^ (word >> 27)) * 0x94D049BB133111EB;
  return word ^ (word >> 31);
}

double random_normal(std::uint64_t seed, std::uint64_t index) {
  const std::uint64_t start = random_word(seed) + 2 * index;
  std::int64_t sum = 0;
  for (const std::uint64_t word : {random_word(start), random_word(start + 1)}) {
    for (int shift = 0; shift < 64; shift += 16) {
      sum += static_cast<std::int64_t>((word >> shift) & 0xFFFF);
    }
  }
  constexpr double mean = 8 * 65535 / 2.0;
  // A uniform whole number from 0 to 65535 has the variance (65536^2 - 1) / 12.
  constexpr double variance = 8 * (65536.0 * 65536.0 - 1) / 12;
  static const double deviation = std::sqrt(variance);
  return (static_cast<double>(sum) - mean) / deviation;
}

double random_uniform(std::uint64_t seed, std::uint64_t index) {
  return static_cast<double>(random_word(random_word(seed) + index) >> 11) * 0x1p-53;
}

}  // namespace kv::polarization
