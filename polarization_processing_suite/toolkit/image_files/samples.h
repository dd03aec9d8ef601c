// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>

namespace kv::polarization {

/// The processor's own order is taken for granted in the packing of samples, too.
static_assert(std::endian::native == std::endian::little, "the library needs an x86-64 processor");

/// Gives each number of type From, which may lie at any address, to `function`, and its result to
/// `to`. The two must not overlap, unless they are the same, or bytes in the upper half of memory
/// become words in the whole of it: no word is written over a byte that has not been read.
template <class From, class To, class Function>
void map_samples(const void* from, To* to, std::size_t count, Function function) {
  // Compilers make vectors of a loop of constant length over memory that nothing else points to.
  constexpr std::size_t run = 32;
  std::array<From, run> in{};
  std::array<To, run> out;
  const auto* bytes = static_cast<const std::byte*>(from);
  const auto map_run = [&](std::size_t used) {
    std::memcpy(in.data(), bytes, used * sizeof(From));
    for (std::size_t i = 0; i < run; ++i) out[i] = static_cast<To>(function(in[i]));
    std::memcpy(to, out.data(), used * sizeof(To));
  };
  for (; count >= run; count -= run, bytes += sizeof in, to += run) map_run(run);
  if (count > 0) map_run(count);
}

inline void widen(const void* bytes, std::span<std::uint16_t> samples) {
  map_samples<std::uint8_t>(bytes, samples.data(), samples.size(),
                            [](std::uint8_t byte) { return byte; });
}

/// Of samples that fit a byte.
inline void narrow(std::span<const std::uint16_t> samples, std::uint8_t* bytes) {
  map_samples<std::uint16_t>(samples.data(), bytes, samples.size(),
                             [](std::uint16_t sample) { return sample; });
}

/// Whether a sample has one of those bits.
inline bool any_has(std::span<const std::uint16_t> samples, std::uint16_t bits) {
  std::array<std::uint16_t, 32> found{};
  const std::uint16_t* from = samples.data();
  std::size_t count = samples.size();
  for (; count >= found.size(); count -= found.size(), from += found.size()) {
    for (std::size_t i = 0; i < found.size(); ++i) found[i] |= from[i];
  }
  std::uint16_t all = 0;
  for (std::size_t i = 0; i < count; ++i) all |= from[i];
  for (const std::uint16_t some : found) all |= some;
  return (all & bits) != 0;
}

/// To `to`, which may be the samples themselves.
inline void swap_bytes(std::span<const std::uint16_t> samples, std::uint16_t* to) {
  map_samples<std::uint16_t>(samples.data(), to, samples.size(),
                             [](std::uint16_t sample) { return sample << 8 | sample >> 8; });
}

}  // namespace kv::polarization
