#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <span>

namespace kv::polarization {

/// The processor's own order is taken for granted in the packing of samples, too.
static_assert(std::endian::native == std::endian::little, "the library needs an x86-64 processor");

/// Gives each element of `from` to `function`, and its result to `to`. They must not overlap,
/// unless they are the same.
template <class From, class To, class Function>
void map_samples(const From* from, To* to, std::size_t count, Function function) {
  // Compilers make vectors of loops of a constant length, at every level of optimization.
  constexpr std::size_t kRun = 32;
  for (; count >= kRun; count -= kRun, from += kRun, to += kRun) {
    for (std::size_t i = 0; i < kRun; ++i) to[i] = static_cast<To>(function(from[i]));
  }
  for (std::size_t i = 0; i < count; ++i) to[i] = static_cast<To>(function(from[i]));
}

inline void widen(const std::uint8_t* bytes, std::span<std::uint16_t> samples) {
  map_samples(bytes, samples.data(), samples.size(), [](unsigned byte) { return byte; });
}

/// Of samples that fit a byte.
inline void narrow(std::span<const std::uint16_t> samples, std::uint8_t* bytes) {
  map_samples(samples.data(), bytes, samples.size(), [](unsigned sample) { return sample; });
}

/// To `to`, which may be the samples themselves.
inline void swap_bytes(std::span<const std::uint16_t> samples, std::uint16_t* to) {
  map_samples(samples.data(), to, samples.size(),
              [](unsigned sample) { return sample << 8 | sample >> 8; });
}

}  // namespace kv::polarization
