// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>

#include "kv/polarization/buffer.h"
#include "toolkit/image_files/byte_source.h"
#include "toolkit/image_files/formats/png_header.h"

namespace kv::polarization {

/// Decodes pixels whose channels have 8 or 16 bits, in memory that is used again.
class PngDecoder {
 public:
  /// Row by row without gaps, in the processor's byte order, interlaced or not. `to` has room for
  /// as many as the header tells. Throws Fault of kind file when the PNG is damaged.
  void decode(ByteSource& source, const PngHeader& header, std::uint8_t* to);

 private:
  struct Pass;
  void gather(ByteSource& source, std::size_t size);
  void place(const PngHeader& header, const Pass& pass, std::uint8_t* rows, std::uint8_t* to);

  Buffer<std::uint8_t> stream_;
  Buffer<std::uint8_t> rows_;   ///< each after its filter
  Buffer<std::uint8_t> zeros_;  ///< above the first row
  Buffer<std::uint8_t> row_;    ///< of an interlaced image
};

}  // namespace kv::polarization
