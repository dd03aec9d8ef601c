// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "toolkit/image_files/deflate/huffman_code.h"

#include <algorithm>

namespace kv::polarization {
namespace {

constexpr int kMostBits = 15;

/// A symbol that occurs; in order of its count, then of the symbol.
using Leaf = std::uint64_t;
constexpr Leaf leaf_of(std::uint32_t count, std::size_t symbol) {
  return std::uint64_t{count} << 32 | symbol;
}
constexpr std::uint64_t count_of(Leaf leaf) { return leaf >> 32; }
constexpr std::size_t symbol_of(Leaf leaf) { return leaf & 0xFFFFFFFFu; }

/// How many codes have each length.
using LengthCounts = std::array<int, kMostBits + 1>;

/// Huffman's method: the two lightest nodes get a parent. Parents come into being in order of their
/// weight, so that the lightest node is the first leaf or the first parent left. Depths beyond the
/// limit count as the limit.
LengthCounts clipped_depths(std::span<const Leaf> leaves, int longest) {
  std::array<std::uint64_t, 2 * kMostSymbols> weights;
  std::array<std::uint16_t, 2 * kMostSymbols> parents;
  const std::size_t root = 2 * leaves.size() - 2;
  for (std::size_t i = 0; i < leaves.size(); ++i) weights[i] = count_of(leaves[i]);
  std::size_t leaf = 0;
  std::size_t inner = leaves.size();
  for (std::size_t parent = inner; parent <= root; ++parent) {
    weights[parent] = 0;
    for (int child = 0; child < 2; ++child) {
      const bool takes_leaf =
          leaf < leaves.size() && (inner == parent || weights[leaf] <= weights[inner]);
      const std::size_t node = takes_leaf ? leaf++ : inner++;
      weights[parent] += weights[node];
      parents[node] = static_cast<std::uint16_t>(parent);
    }
  }
  LengthCounts counts{};
  std::array<int, 2 * kMostSymbols> depths;
  depths[root] = 0;
  for (std::size_t node = root; node-- > 0;) {
    depths[node] = depths[parents[node]] + 1;
    if (node < leaves.size()) ++counts[static_cast<std::size_t>(std::min(depths[node], longest))];
  }
  return counts;
}

/// Clipped codes take more than there is room for. Room is made by codes of the next greatest
/// length: one of them becomes the parent of itself and of one of the longest.
void make_room(LengthCounts& counts, int longest) {
  const auto last = static_cast<std::size_t>(longest);
  int taken = 0;  // in codes of the greatest length
  for (std::size_t length = 1; length <= last; ++length) taken += counts[length] << (last - length);
  for (; taken > 1 << last; --taken) {
    std::size_t length = last - 1;
    while (counts[length] == 0) --length;
    --counts[length];
    counts[length + 1] += 2;
    --counts[last];
  }
}

std::uint16_t reversed(unsigned bits, int count) {
  unsigned result = 0;
  for (int i = 0; i < count; ++i) result |= (bits >> i & 1u) << (count - 1 - i);
  return static_cast<std::uint16_t>(result);
}

/// Codes of the same length follow one another in order of their symbols.
void number_codes(HuffmanCode& code, const LengthCounts& counts) {
  std::array<unsigned, kMostBits + 1> next{};
  for (std::size_t length = 1; length < next.size(); ++length) {
    next[length] = (next[length - 1] + static_cast<unsigned>(counts[length - 1])) << 1;
  }
  for (std::size_t symbol = 0; symbol < kMostSymbols; ++symbol) {
    const std::uint8_t length = code.lengths[symbol];
    if (length > 0) code.bits[symbol] = reversed(next[length]++, length);
  }
}

}  // namespace

HuffmanCode huffman_code(std::span<const std::uint32_t> counts, int longest) {
  std::array<Leaf, kMostSymbols> room;
  std::size_t used = 0;
  for (std::size_t symbol = 0; symbol < counts.size(); ++symbol) {
    if (counts[symbol] > 0) room[used++] = leaf_of(counts[symbol], symbol);
  }
  const std::span<Leaf> leaves(room.data(), used);
  std::sort(leaves.begin(), leaves.end());
  LengthCounts lengths = clipped_depths(leaves, longest);
  make_room(lengths, longest);
  HuffmanCode code;
  std::size_t leaf = 0;
  for (int length = longest; length > 0; --length) {  // the rarest symbols have the longest codes
    for (int i = 0; i < lengths[static_cast<std::size_t>(length)]; ++i) {
      code.lengths[symbol_of(leaves[leaf++])] = static_cast<std::uint8_t>(length);
    }
  }
  number_codes(code, lengths);
  return code;
}

}  // namespace kv::polarization
