// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <cstdint>

#include "kv/image_files/pending_file.h"
#include "toolkit/image_files/byte_source.h"

namespace kv::polarization {

/// PNG's numbers for the kinds of pixels.
enum class PngColour : std::uint8_t { grey = 0, rgb = 2, palette = 3, grey_alpha = 4, rgba = 6 };

constexpr std::size_t channels_of(PngColour colour) {
  switch (colour) {
    case PngColour::rgb:
      return 3;
    case PngColour::grey_alpha:
      return 2;
    case PngColour::rgba:
      return 4;
    default:
      return 1;
  }
}

struct PngHeader {
  std::uint32_t width;
  std::uint32_t height;
  int bits;  ///< a channel
  PngColour colour;
  bool interlaced = false;

  /// Of whole bytes a channel.
  std::size_t pixel_size() const {
    return channels_of(colour) * static_cast<std::size_t>(bits / 8);
  }
};

/// Where the chunks behind the header begin.
constexpr std::uint64_t kPngHeaderEnd = 8 + 8 + 13 + 4;

/// Throws Fault of kind file when it is damaged, or the file no PNG.
PngHeader read_png_header(ByteSource& source);

/// Throws Fault of kind unsupported when the image is no raw frame.
void check_is_raw_frame(const PngHeader& header);

/// The start of a file, not interlaced.
void write_png_header(PendingFile& file, const PngHeader& header);

}  // namespace kv::polarization
