#pragma once

#include <tiffio.h>

#include <cstdint>
#include <string>

namespace kv::polarization {

/// What of a page's fields decides on how it is read.
struct TiffPage {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  int bits = 0;  ///< stored a sample, 8 or 16
  int bit_depth =
      0;  ///< those that the maximum sample value needs, if the page has one, up to `bits`
  bool tiled = false;
  std::uint32_t part_width = 0;  ///< of a tile or strip, the last of which may be cut off
  std::uint32_t part_height = 0;
  std::string orientation;  ///< a note when it is not the usual one

  std::size_t bytes_a_sample() const { return bits == 8 ? 1 : 2; }
};

/// Of the page at hand. Throws Fault: unsupported when it is no raw frame; file when the bytes of a
/// file of that size cannot hold what it claims.
TiffPage examine_page(TIFF* tiff, std::uint64_t file_size);

/// No more pixels than that are in a file with such pages.
std::uint64_t most_pixels(TIFF* tiff, const TiffPage& page, std::uint64_t file_size);

}  // namespace kv::polarization
