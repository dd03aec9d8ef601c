// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "toolkit/image_files/deflate/zlib_encoder.h"

#include <algorithm>
#include <bit>

#include "toolkit/image_files/deflate/zlib_library.h"

namespace kv::polarization {
namespace {

/// Deflate with a window of 32 KB, and the level that is called fastest.
constexpr std::uint64_t kHeader = 0x0178;

/// Header, checksum, and what a writer of bits needs behind.
constexpr std::size_t kAround = 2 + 4 + 8;

constexpr std::uint32_t big_endian(std::uint32_t number) {
  return number >> 24 | (number >> 8 & 0xFF00) | (number & 0xFF00) << 8 | number << 24;
}

}  // namespace

std::span<const std::uint8_t> ZlibEncoder::encode(std::span<const std::uint8_t> bytes, bool last) {
  if (compression_ != Compression::small) return encode_by_blocks(bytes, last);
  gathered_.insert(gathered_.end(), bytes.begin(), bytes.end());
  if (!last) return {};
  // Where there is noise, the repeats that are found make the stream longer.
  deflate_small(gathered_, small_);
  const auto stream = encode_by_blocks(gathered_, true);
  gathered_.clear();
  return small_.size() < stream.size() ? std::span<const std::uint8_t>(small_) : stream;
}

std::span<const std::uint8_t> ZlibEncoder::encode_by_blocks(std::span<const std::uint8_t> bytes,
                                                            bool last) {
  stream_.resize(most_deflated(bytes.size()) + kAround);
  writer_.move_to(stream_.data());
  if (at_start_) writer_.put(kHeader, 16);
  checksum_ = adler32_of(at_start_ ? 1 : checksum_, bytes);
  at_start_ = last;
  write_blocks(bytes, last);
  if (last) {
    writer_.align();
    writer_.put(big_endian(checksum_), 32);
    writer_.flush();
  }
  return {stream_.data(), writer_.position()};
}

void ZlibEncoder::write_blocks(std::span<const std::uint8_t> bytes, bool last) {
  if (compression_ == Compression::none) return write_stored(writer_, bytes, last);
  do {
    const auto block = bytes.first(std::min(bytes.size(), kMostOfBlock));
    bytes = bytes.subspan(block.size());
    block_writer_.write(writer_, block, last && bytes.empty());
  } while (!bytes.empty());
}

}  // namespace kv::polarization
