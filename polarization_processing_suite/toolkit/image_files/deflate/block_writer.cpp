// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "toolkit/image_files/deflate/block_writer.h"

#include <algorithm>
#include <bit>

namespace kv::polarization {
namespace {

constexpr std::size_t kLiterals = 256;
constexpr std::size_t kEndOfBlock = 256;

/// Four literals fit between two flushes.
constexpr int kLongestCode = 12;
constexpr int kLongestLengthCode = 7;

/// All matches have distance 1. A second code, never used, makes the code of distances complete, as
/// some readers want it.
constexpr std::array<std::uint8_t, 2> kDistanceLengths = {1, 1};

constexpr std::size_t kMostStored = 65535;

/// The order in which the header tells the code of lengths: those used least come last, and are
/// left out.
constexpr std::array<std::uint8_t, 19> kLengthOrder = {16, 17, 18, 0, 8,  7, 9,  6, 10, 5,
                                                       11, 4,  12, 3, 13, 2, 14, 1, 15};

/// Bits of a header before the lengths.
constexpr std::size_t kHeaderBits = 3 + 5 + 5 + 4;

/// A match's length: its symbol, and bits that follow it.
struct MatchLength {
  std::size_t symbol;
  unsigned extra_bits;
  unsigned extra;
};

constexpr MatchLength match_length(std::uint32_t repeats) {
  if (repeats == kLongestMatch) return {285, 0, 0};
  const unsigned above = repeats - kShortestMatch;
  const unsigned extra_bits = above < 8 ? 0 : static_cast<unsigned>(std::bit_width(above)) - 3;
  return {257 + 4 * extra_bits + (above >> extra_bits), extra_bits,
          above & ((1u << extra_bits) - 1)};
}

/// Counts bytes in four tables in turn, as equal bytes in a row would wait for one another.
class ByteCounts {
 public:
  void add(const std::uint8_t* bytes, std::size_t count) {
    for (; count >= 4; count -= 4, bytes += 4) {
      for (std::size_t i = 0; i < 4; ++i) ++counts_[i][bytes[i]];
    }
    for (std::size_t i = 0; i < count; ++i) ++counts_[i][bytes[i]];
  }
  std::uint32_t of(std::size_t byte) const {
    return counts_[0][byte] + counts_[1][byte] + counts_[2][byte] + counts_[3][byte];
  }

 private:
  std::array<std::array<std::uint32_t, kLiterals>, 4> counts_{};
};

/// Bits of one or several codes.
struct Bits {
  std::uint64_t bits;
  unsigned count;

  friend Bits operator+(Bits first, Bits then) {
    return {first.bits | then.bits << first.count, first.count + then.count};
  }
};

/// Bits and length of each literal in one number, so that a literal is one look-up.
using LiteralTable = std::array<std::uint32_t, kLiterals>;

/// Four literals are joined in pairs, as each of them would wait for the one before.
void put_literals(BitWriter& to, const std::uint8_t* bytes, std::size_t count,
                  const LiteralTable& table) {
  BitWriter writer = to;
  const auto code = [&](std::size_t i) {
    return Bits{table[bytes[i]] >> 8, table[bytes[i]] & 0xFF};
  };
  for (; count >= 4; count -= 4, bytes += 4) {
    const Bits four = (code(0) + code(1)) + (code(2) + code(3));
    writer.put(four.bits, four.count);
    writer.flush();
  }
  for (std::size_t i = 0; i < count; ++i) writer.put(code(i).bits, code(i).count);
  writer.flush();
  to = writer;
}

}  // namespace

void write_stored(BitWriter& to, std::span<const std::uint8_t> bytes, bool last) {
  do {
    const std::size_t size = std::min(bytes.size(), kMostStored);
    to.put(last && size == bytes.size() ? 1 : 0, 3);  // the two upper bits are the kind, 0
    to.align();
    to.put(size | (~size & 0xFFFF) << 16, 32);
    to.flush();
    to.copy(bytes.data(), size);
    bytes = bytes.subspan(size);
  } while (!bytes.empty());
}

void BlockWriter::write(BitWriter& to, std::span<const std::uint8_t> bytes, bool last) {
  if (bytes.empty()) return write_stored(to, bytes, last);
  find_stretches(bytes, stretches_);
  count_symbols(bytes);
  code_ = huffman_code(counts_, kLongestCode);
  describe_code();
  if (coded_bits() >= 8 * bytes.size()) return write_stored(to, bytes, last);
  write_header(to, last);
  write_symbols(to, bytes.data());
}

void BlockWriter::count_symbols(std::span<const std::uint8_t> bytes) {
  ByteCounts literals;
  counts_.fill(0);
  extra_bits_ = 0;
  const std::uint8_t* from = bytes.data();
  for (const Stretch& stretch : stretches_) {
    literals.add(from, stretch.literals);
    from += stretch.literals + stretch.repeats;
    if (stretch.repeats == 0) continue;
    const MatchLength length = match_length(stretch.repeats);
    ++counts_[length.symbol];
    extra_bits_ += length.extra_bits + kDistanceLengths[0];
  }
  for (std::size_t byte = 0; byte < kLiterals; ++byte) counts_[byte] = literals.of(byte);
  counts_[kEndOfBlock] = 1;
}

/// The header tells the lengths of the code, by a code of their own.
void BlockWriter::describe_code() {
  std::size_t used = code_.lengths.size();
  while (code_.lengths[used - 1] == 0) --used;
  described_.assign(code_.lengths.begin(),
                    code_.lengths.begin() + static_cast<std::ptrdiff_t>(used));
  described_.insert(described_.end(), kDistanceLengths.begin(), kDistanceLengths.end());
  std::array<std::uint32_t, kLengthOrder.size()> counts{};
  for (const std::uint8_t length : described_) ++counts[length];
  length_code_ = huffman_code(counts, kLongestLengthCode);
  length_codes_ = kLengthOrder.size();
  while (length_code_.lengths[kLengthOrder[length_codes_ - 1]] == 0) --length_codes_;
}

std::size_t BlockWriter::coded_bits() const {
  std::size_t bits = kHeaderBits + 3 * length_codes_ + extra_bits_;
  for (const std::uint8_t length : described_) bits += length_code_.lengths[length];
  for (std::size_t i = 0; i < counts_.size(); ++i)
    bits += std::size_t{counts_[i]} * code_.lengths[i];
  return bits;
}

void BlockWriter::write_header(BitWriter& to, bool last) const {
  constexpr std::size_t dynamic = 2;
  constexpr std::size_t fewest_symbols = 257;
  constexpr std::size_t fewest_length_codes = 4;
  to.put(last ? 1 : 0, 1);
  to.put(dynamic, 2);
  to.put(described_.size() - kDistanceLengths.size() - fewest_symbols, 5);
  to.put(kDistanceLengths.size() - 1, 5);
  to.put(length_codes_ - fewest_length_codes, 4);
  to.flush();
  for (std::size_t i = 0; i < length_codes_; ++i) {
    to.put(length_code_.lengths[kLengthOrder[i]], 3);
    to.flush();
  }
  for (const std::uint8_t length : described_) {
    to.put(length_code_.bits[length], length_code_.lengths[length]);
    to.flush();
  }
}

void BlockWriter::write_symbols(BitWriter& to, const std::uint8_t* bytes) const {
  LiteralTable table;
  for (std::size_t i = 0; i < table.size(); ++i) {
    table[i] = std::uint32_t{code_.bits[i]} << 8 | code_.lengths[i];
  }
  const auto put = [&](std::size_t symbol) { to.put(code_.bits[symbol], code_.lengths[symbol]); };
  for (const Stretch& stretch : stretches_) {
    put_literals(to, bytes, stretch.literals, table);
    bytes += stretch.literals + stretch.repeats;
    if (stretch.repeats == 0) continue;
    const MatchLength length = match_length(stretch.repeats);
    put(length.symbol);
    to.put(length.extra, length.extra_bits);
    to.put(0, kDistanceLengths[0]);
    to.flush();
  }
  put(kEndOfBlock);
  to.flush();
}

}  // namespace kv::polarization
