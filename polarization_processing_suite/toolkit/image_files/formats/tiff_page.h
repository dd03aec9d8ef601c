// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <tiffio.h>

#include <cstdint>
#include <string>

#include "kv/image_files/image_reader.h"

namespace kv::polarization {

/// What of a page's fields decides on how it is read.
struct TiffPage {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  int channels = 1;
  int bits = 0;           ///< stored a sample
  int bit_depth = 0;      ///< those that the maximum sample value needs, if the page has one
  int sample_format = 0;  ///< libtiff's number
  int photometric = 0;    ///< libtiff's number
  int compression = 0;    ///< libtiff's number
  bool apart = false;     ///< each channel for itself
  bool tiled = false;
  std::uint32_t part_width = 0;  ///< of a tile or strip, the last of which may be cut off
  std::uint32_t part_height = 0;
  std::string orientation;  ///< a note when it is not the usual one

  std::uint64_t pixel_bytes() const { return static_cast<unsigned>(channels * bits / 8); }
};

/// Of the page at hand.
TiffPage read_fields(TIFF* tiff);

/// Throw Fault of kind unsupported when the page is no raw frame, or no image of ImageReader.
void check_is_raw_frame(const TiffPage& page);
ElementType check_is_image(const TiffPage& page);

/// Throws Fault of kind file when the bytes of a file of that size cannot hold what the page
/// claims.
void check_parts(TIFF* tiff, const TiffPage& page, std::uint64_t file_size);

/// No more pixels than that are in a file with such pages.
std::uint64_t most_pixels(const TiffPage& page, std::uint64_t file_size);

}  // namespace kv::polarization
