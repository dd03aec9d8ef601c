// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>

#include "kv/image_files/image_writer.h"
#include "toolkit/image_files/formats/tiff_stream.h"

namespace kv::polarization {

/// Whether a file with pages of that many bytes of pixels needs BigTIFF's offsets of 64 bits.
constexpr bool needs_big_tiff(std::uint64_t page_bytes, std::uint64_t pages = 1) {
  constexpr std::uint64_t titles = 1u << 20;
  const std::uint64_t fields_and_arrays = 512 + page_bytes / 32768;
  return page_bytes + fields_and_arrays > (UINT32_MAX - titles) / pages;
}

/// Appends a page, whose directory libtiff has yet to write.
void write_tiff_page(PendingFile& file, const TiffStream& stream, const GreyImage& image,
                     const WriteOptions& options);
void write_tiff_page(PendingFile& file, const TiffStream& stream, const FloatImage& image,
                     const WriteOptions& options);
void write_tiff_page(PendingFile& file, const TiffStream& stream, const Picture& picture,
                     const WriteOptions& options);

/// Bytes of its pixels in a file.
std::uint64_t tiff_bytes(const GreyImage& image);
std::uint64_t tiff_bytes(const FloatImage& image);
std::uint64_t tiff_bytes(const Picture& picture);

/// Writes a file of one page.
template <class Image>
void write_tiff_image(PendingFile& file, const Image& image, const WriteOptions& options) {
  const TiffStream stream(file, needs_big_tiff(tiff_bytes(image)));
  write_tiff_page(file, stream, image, options);
  if (TIFFFlush(stream.get()) != 1) file.fail();
}

}  // namespace kv::polarization
