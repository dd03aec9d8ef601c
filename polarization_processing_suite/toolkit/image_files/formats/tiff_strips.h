// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <span>

#include "kv/image_files/image_writer.h"
#include "kv/polarization/buffer.h"
#include "toolkit/image_files/deflate/zlib_encoder.h"

namespace kv::polarization {

/// What rows are stored as before they are compressed, with TIFF's numbers.
enum class TiffPredictor : std::uint8_t {
  none = 1,
  horizontal = 2,     ///< differences of samples to those of the pixel on the left
  floating_point = 3  ///< bytes of equal weight side by side, and then their differences
};

/// Compresses strips in memory that is used again.
class TiffStripEncoder {
 public:
  /// A row has so many samples, of 1, 2 or 4 bytes.
  TiffStripEncoder(Compression compression, TiffPredictor predictor, std::size_t row_samples,
                   std::size_t sample_size, std::size_t channels);

  /// A strip's stream, which is valid until the next call.
  std::span<const std::uint8_t> encode(const std::uint8_t* pixels, std::size_t rows);

 private:
  void predict(const std::uint8_t* row, std::uint8_t* to);

  TiffPredictor predictor_;
  std::size_t row_samples_;
  std::size_t sample_size_;
  std::size_t channels_;
  ZlibEncoder encoder_;
  Buffer<std::uint8_t> weights_;  ///< a row of floats, bytes of equal weight side by side
  Buffer<std::uint8_t> strip_;
};

}  // namespace kv::polarization
