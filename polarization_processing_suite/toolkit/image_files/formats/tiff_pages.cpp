// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "toolkit/image_files/formats/tiff_pages.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "kv/polarization/fault.h"
#include "toolkit/api/shown_text.h"
#include "toolkit/image_files/stored_samples.h"

namespace kv::polarization {

TiffPages::TiffPages(SourcePointer source) : source_(std::move(source)), stream_(*source_) {
  if (stream_.get() == nullptr) fail_as_damaged();
  find_pages();
}

/// libtiff would go from page to page anew for each one that is asked for. Small copies of other
/// pages are no images of their own.
void TiffPages::find_pages() {
  TIFF* tiff = stream_.get();
  do {
    std::uint32_t kind = 0;
    TIFFGetFieldDefaulted(tiff, TIFFTAG_SUBFILETYPE, &kind);
    if ((kind & FILETYPE_REDUCEDIMAGE) == 0) places_.push_back(TIFFCurrentDirOffset(tiff));
  } while (TIFFReadDirectory(tiff) == 1);
  if (!stream_.message().empty()) fail_as_damaged();
  if (places_.empty()) {
    throw Fault(FaultKind::unsupported,
                "the TIFF holds reduced images alone; a page in full size is needed");
  }
}

TiffPage TiffPages::open(std::size_t index) {
  stream_.clear_message();
  if (TIFFSetSubDirectory(stream_.get(), places_[index]) != 1) fail_as_damaged();
  return read_fields(stream_.get());
}

void TiffPages::read(const TiffPage& page, std::uint8_t* to) {
  if (page.tiled) return read_tiles(page, to);
  if (!lies_in_one_piece(page)) return read_strips(page, to);
  read_exactly(*source_, TIFFGetStrileOffset(stream_.get(), 0), to,
               std::size_t{page.width} * page.height * page.pixel_bytes());
}

/// Whether the page's pixels stand in the file as they do in memory: one read instead of many.
bool TiffPages::lies_in_one_piece(const TiffPage& page) const {
  TIFF* tiff = stream_.get();
  std::uint16_t fill_order = FILLORDER_MSB2LSB;
  TIFFGetFieldDefaulted(tiff, TIFFTAG_FILLORDER, &fill_order);
  const bool own_order = page.bits == 8 || TIFFIsByteSwapped(tiff) == 0;
  if (page.compression != COMPRESSION_NONE || fill_order != FILLORDER_MSB2LSB || !own_order) {
    return false;
  }
  const std::uint64_t strip = page.width * page.pixel_bytes() * page.part_height;
  const std::uint64_t first = TIFFGetStrileOffset(tiff, 0);
  for (std::uint32_t i = 1; i < TIFFNumberOfStrips(tiff); ++i) {
    if (TIFFGetStrileOffset(tiff, i) != first + i * strip) return false;
  }
  return true;
}

// libtiff takes a deflate stream that ends early for a whole one, and leaves the rest of the strip
// as it was: such pixels are to be 0, and not what the memory held before.

void TiffPages::read_strips(const TiffPage& page, std::uint8_t* to) {
  const std::size_t size = std::size_t{page.width} * page.height * page.pixel_bytes();
  const std::size_t strip_size = std::size_t{page.width} * page.part_height * page.pixel_bytes();
  std::uint32_t strip = 0;
  for (std::size_t done = 0; done < size; done += strip_size, ++strip) {
    const auto wanted = static_cast<tmsize_t>(std::min(strip_size, size - done));
    std::memset(to + done, 0, static_cast<std::size_t>(wanted));
    if (TIFFReadEncodedStrip(stream_.get(), strip, to + done, wanted) != wanted) fail_as_damaged();
  }
}

void TiffPages::read_tiles(const TiffPage& page, std::uint8_t* to) {
  const std::size_t row_size = page.width * page.pixel_bytes();
  const std::size_t tile_row = page.part_width * page.pixel_bytes();
  tile_.resize(tile_row * page.part_height);
  const auto wanted = static_cast<tmsize_t>(tile_.size());
  std::uint32_t tile = 0;
  for (std::size_t top = 0; top < page.height; top += page.part_height) {
    const std::size_t rows = std::min<std::size_t>(page.part_height, page.height - top);
    for (std::size_t left = 0; left < row_size; left += tile_row, ++tile) {
      std::ranges::fill(tile_, 0);
      if (TIFFReadEncodedTile(stream_.get(), tile, tile_.data(), wanted) != wanted) {
        fail_as_damaged();
      }
      const std::size_t size = std::min(tile_row, row_size - left);
      for (std::size_t row = 0; row < rows; ++row) {
        std::memcpy(to + (top + row) * row_size + left, tile_.data() + row * tile_row, size);
      }
    }
  }
}

void TiffPages::fail_as_damaged() const {
  // libtiff repeats texts of the file.
  throw Fault(FaultKind::file, "the TIFF is damaged or truncated (" +
                                   shown(stream_.message(), 200) + "); an intact one is needed");
}

}  // namespace kv::polarization
