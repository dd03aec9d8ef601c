#pragma once

#include <cstdint>

#include "kv/image_files/image_writer.h"

namespace kv::polarization {

/// Whether a file with that many bytes of pixels needs BigTIFF's offsets of 64 bits.
constexpr bool needs_big_tiff(std::uint64_t pixel_bytes) {
  constexpr std::uint64_t fields_and_arrays = 1u << 20;
  return pixel_bytes > UINT32_MAX - fields_and_arrays;
}

void write_tiff_grey(PendingFile& file, const GreyImage& image, const WriteOptions& options);
void write_tiff_floats(PendingFile& file, const FloatImage& image, const WriteOptions& options);
void write_tiff_picture(PendingFile& file, const Picture& picture, const WriteOptions& options);

}  // namespace kv::polarization
