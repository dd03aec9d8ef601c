// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace kv::polarization {

/// Of deflate's alphabets, the largest.
constexpr std::size_t kMostSymbols = 286;

/// A prefix code: bits by symbol, the first one lowest, and how many; 0 for symbols without a code.
struct HuffmanCode {
  std::array<std::uint16_t, kMostSymbols> bits{};
  std::array<std::uint8_t, kMostSymbols> lengths{};
};

/// A short code for symbols that occur so often, of up to `longest` bits a symbol, 15 at most. Two
/// symbols or more must occur, and no more than such codes can tell apart.
HuffmanCode huffman_code(std::span<const std::uint32_t> counts, int longest);

}  // namespace kv::polarization
