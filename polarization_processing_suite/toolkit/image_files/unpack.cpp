// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include <algorithm>
#include <array>
#include <cstring>
#include <string>

#include "kv/image_files/pixel_format.h"
#include "kv/polarization/fault.h"
#include "toolkit/image_files/samples.h"

namespace kv::polarization {
namespace {

// Packed samples are taken four at a time, as the low bits of a 64-bit word. Two shifts spread
// them: pairs of samples to the halves of the word, then the two of each pair to quarters,
// right-aligned. That needs no vector instructions, and keeps up with memory.

struct Mono10p {
  static constexpr std::size_t kBytesOfFour = 5;
  static std::uint64_t spread(std::uint64_t word) {
    const std::uint64_t pairs = (word & 0xF'FFFF) | (word << 12 & 0xF'FFFF'0000'0000);
    return (pairs & 0x3FF'0000'03FF) | (pairs << 6 & 0x03FF'0000'03FF'0000);
  }
};

struct Mono12p {
  static constexpr std::size_t kBytesOfFour = 6;
  static std::uint64_t spread(std::uint64_t word) {
    const std::uint64_t pairs = (word & 0xFF'FFFF) | (word << 8 & 0xFF'FFFF'0000'0000);
    return (pairs & 0xFFF'0000'0FFF) | (pairs << 4 & 0x0FFF'0000'0FFF'0000);
  }
};

/// High bits come from the outer bytes of a pair, low ones from the two halves of the middle byte.
struct Mono10Packed {
  static constexpr std::size_t kBytesOfFour = 6;
  static std::uint64_t spread(std::uint64_t word) {
    const std::uint64_t pairs = (word & 0xFF'FFFF) | (word << 8 & 0xFF'FFFF'0000'0000);
    return (pairs << 2 & 0x03FC'03FC'03FC'03FC) | (pairs >> 8 & 0x3'0000'0003) |
           (pairs << 4 & 0x3'0000'0003'0000);
  }
};

struct Mono12Packed {
  static constexpr std::size_t kBytesOfFour = 6;
  static std::uint64_t spread(std::uint64_t word) {
    const std::uint64_t pairs = (word & 0xFF'FFFF) | (word << 8 & 0xFF'FFFF'0000'0000);
    return (pairs << 4 & 0x0FFF'0FF0'0FFF'0FF0) | (pairs >> 8 & 0xF'0000'000F);
  }
};

template <class Layout>
void unpack_as(std::span<const std::byte> bytes, std::span<std::uint16_t> samples) {
  const std::byte* from = bytes.data();
  std::uint16_t* to = samples.data();
  std::size_t bytes_left = bytes.size();
  std::size_t samples_left = samples.size();
  const auto take = [&](std::size_t readable, std::size_t count) {
    std::uint64_t word = 0;
    std::memcpy(&word, from, readable);
    word = Layout::spread(word);
    std::memcpy(to, &word, 2 * count);
  };
  for (; bytes_left >= 8 && samples_left >= 4; bytes_left -= Layout::kBytesOfFour,
                                               samples_left -= 4, from += Layout::kBytesOfFour,
                                               to += 4) {
    take(8, 4);
  }
  for (; samples_left > 0; bytes_left -= std::min(bytes_left, Layout::kBytesOfFour)) {
    const std::size_t count = std::min<std::size_t>(samples_left, 4);
    take(std::min(bytes_left, Layout::kBytesOfFour), count);
    samples_left -= count;
    from += Layout::kBytesOfFour;
    to += count;
  }
}

void unpack_words(std::span<const std::byte> bytes, int shift, std::span<std::uint16_t> samples) {
  if (shift == 0) {
    if (!samples.empty()) std::memcpy(samples.data(), bytes.data(), samples.size_bytes());
    return;
  }
  map_samples<std::uint16_t>(bytes.data(), samples.data(), samples.size(),
                             [shift](std::uint16_t word) { return word >> shift; });
}

}  // namespace

void unpack(std::span<const std::byte> bytes, PixelFormat format,
            std::span<std::uint16_t> samples) {
  const std::size_t needed = stored_bytes(format, samples.size());
  const PixelFormatTraits& traits = traits_of(format);
  if (bytes.size() < needed) {
    throw Fault(FaultKind::argument, std::to_string(samples.size()) + " pixels of " +
                                         std::string(traits.name) + " take " +
                                         std::to_string(needed) + " bytes; there are " +
                                         std::to_string(bytes.size()));
  }
  const bool ten_bits = traits.bit_depth == 10;
  switch (traits.packing) {
    case Packing::bytes:
      return widen(bytes.data(), samples);
    case Packing::right_words:
      return unpack_words(bytes, 0, samples);
    case Packing::left_words:
      return unpack_words(bytes, traits.bits - traits.bit_depth, samples);
    case Packing::bit_stream:
      return ten_bits ? unpack_as<Mono10p>(bytes, samples) : unpack_as<Mono12p>(bytes, samples);
    case Packing::shared_middle_byte:
      return ten_bits ? unpack_as<Mono10Packed>(bytes, samples)
                      : unpack_as<Mono12Packed>(bytes, samples);
  }
}

}  // namespace kv::polarization
