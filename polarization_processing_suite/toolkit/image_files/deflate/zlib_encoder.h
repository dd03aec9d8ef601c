// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "kv/image_files/image_writer.h"
#include "kv/polarization/buffer.h"
#include "toolkit/image_files/deflate/bit_writer.h"
#include "toolkit/image_files/deflate/block_writer.h"

namespace kv::polarization {

/// Makes one stream of zlib's kind after the other, piece by piece, in memory that is used again.
/// The same pieces give the same bytes.
class ZlibEncoder {
 public:
  explicit ZlibEncoder(Compression compression) : compression_(compression) {}

  /// Takes the next bytes of a stream. Returns those of the stream so far that were not returned
  /// before, which are valid until the next call; with Compression::small none before the last
  /// ones.
  std::span<const std::uint8_t> encode(std::span<const std::uint8_t> bytes, bool last);

 private:
  std::span<const std::uint8_t> encode_by_blocks(std::span<const std::uint8_t> bytes, bool last);
  void write_blocks(std::span<const std::uint8_t> bytes, bool last);

  Compression compression_;
  BitWriter writer_;
  BlockWriter block_writer_;
  Buffer<std::uint8_t> stream_;
  std::vector<std::uint8_t> gathered_;  ///< with Compression::small, which takes all at once
  Buffer<std::uint8_t> small_;
  std::uint32_t checksum_ = 1;
  bool at_start_ = true;
};

}  // namespace kv::polarization
