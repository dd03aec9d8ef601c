// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include "toolkit/image_files/deflate/bit_writer.h"
#include "toolkit/image_files/deflate/huffman_code.h"
#include "toolkit/image_files/deflate/stretches.h"

namespace kv::polarization {

/// No more bytes are written for so many, in blocks of kMostOfBlock.
constexpr std::size_t most_deflated(std::size_t bytes) { return bytes + bytes / 4096 + 16; }

/// Stored blocks of deflate, as many as the bytes need; one at least.
void write_stored(BitWriter& to, std::span<const std::uint8_t> bytes, bool last);

/// Writes blocks of deflate, each with a Huffman code of its own. Noise has no repeats that were
/// worth a search; only runs of equal bytes are taken together. Keeps memory that is used again.
class BlockWriter {
 public:
  /// Up to kMostOfBlock bytes; stored when they do not shrink.
  void write(BitWriter& to, std::span<const std::uint8_t> bytes, bool last);

 private:
  void count_symbols(std::span<const std::uint8_t> bytes);
  std::size_t coded_bits() const;
  void write_header(BitWriter& to, bool last) const;
  void write_symbols(BitWriter& to, const std::uint8_t* bytes) const;
  void describe_code();

  std::vector<Stretch> stretches_;
  std::array<std::uint32_t, kMostSymbols> counts_{};
  std::size_t extra_bits_ = 0;           ///< of matches, beyond their symbols
  HuffmanCode code_;                     ///< of literals, lengths and the end
  std::vector<std::uint8_t> described_;  ///< lengths of codes, as the header has them
  HuffmanCode length_code_;              ///< of those lengths
  std::size_t length_codes_ = 0;         ///< that the header tells
};

}  // namespace kv::polarization
