// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "toolkit/image_files/formats/png_decoder.h"

#include <algorithm>
#include <array>
#include <span>
#include <string>

#include "toolkit/image_files/deflate/zlib_library.h"
#include "toolkit/image_files/formats/png_chunks.h"
#include "toolkit/image_files/formats/png_filters.h"
#include "toolkit/image_files/samples.h"

namespace kv::polarization {

/// Which pixels are stored together, as an image of their own.
struct PngDecoder::Pass {
  std::size_t left, top;     ///< the first one
  std::size_t across, down;  ///< from one to the next

  std::size_t columns(const PngHeader& header) const {
    return (header.width + across - 1 - left) / across;
  }
  std::size_t rows(const PngHeader& header) const {
    return (header.height + down - 1 - top) / down;
  }
  std::size_t bytes(const PngHeader& header) const {
    const std::size_t row_size = columns(header) * header.pixel_size();
    return row_size == 0 ? 0 : rows(header) * (1 + row_size);
  }
};

namespace {

/// A stream takes no more bytes than that, even when it is stored in blocks of one byte each.
constexpr std::uint64_t most_stream(std::uint64_t bytes) { return 6 * bytes + (1u << 16); }

/// Bytes of 16-bit channels come in the other order.
void put_in_order(std::span<const std::uint8_t> row, int bits, std::uint8_t* to) {
  if (bits == 8) {
    std::copy(row.begin(), row.end(), to);
    return;
  }
  map_samples<std::uint16_t>(row.data(), reinterpret_cast<std::uint16_t*>(to), row.size() / 2,
                             [](std::uint16_t sample) { return sample << 8 | sample >> 8; });
}

}  // namespace

void PngDecoder::decode(ByteSource& source, const PngHeader& header, std::uint8_t* to) {
  static constexpr std::array<Pass, 1> whole = {{{0, 0, 1, 1}}};
  static constexpr std::array<Pass, 7> interlaced = {{{0, 0, 8, 8},
                                                      {4, 0, 8, 8},
                                                      {0, 4, 4, 8},
                                                      {2, 0, 4, 4},
                                                      {0, 2, 2, 4},
                                                      {1, 0, 2, 2},
                                                      {0, 1, 1, 2}}};
  const std::span<const Pass> passes =
      header.interlaced ? std::span<const Pass>(interlaced) : whole;
  std::size_t size = 0;
  for (const Pass& pass : passes) size += pass.bytes(header);
  gather(source, size);
  rows_.resize(size);
  if (!inflate_stream(stream_, rows_)) {
    fail_as_damaged_png("its stream does not give the " + std::to_string(size) +
                        " bytes of its rows");
  }
  std::uint8_t* rows = rows_.data();
  for (const Pass& pass : passes) {
    place(header, pass, rows, to);
    rows += pass.bytes(header);
  }
}

/// The contents of all IDAT chunks are one stream.
void PngDecoder::gather(ByteSource& source, std::size_t size) {
  const std::uint64_t most = std::min(source.size(), most_stream(size));
  stream_.resize(static_cast<std::size_t>(most));
  std::size_t used = 0;
  for (PngChunk chunk = png_chunk_at(source, kPngHeaderEnd); chunk.kind != "IEND";
       chunk = png_chunk_at(source, chunk.end())) {
    if (chunk.kind == "IDAT") {
      if (chunk.length + kPngChecksum > most - used) fail_as_damaged_png("its stream is too long");
      read_png_chunk(source, chunk, stream_.data() + used);
      used += chunk.length;
    } else if (!chunk.is_ancillary() && chunk.kind != "PLTE") {
      fail_as_damaged_png("its chunk " + chunk.kind + " is of no known kind");
    }
  }
  stream_.resize(used);
}

/// Unfilters the rows of a pass where they are, and copies their pixels to their places.
void PngDecoder::place(const PngHeader& header, const Pass& pass, std::uint8_t* rows,
                       std::uint8_t* to) {
  const std::size_t pixel = header.pixel_size();
  const std::size_t columns = pass.columns(header);
  const std::size_t row_size = columns * pixel;
  if (row_size == 0) return;
  zeros_.resize(row_size);
  std::fill(zeros_.begin(), zeros_.end(), std::uint8_t{0});
  row_.resize(row_size);
  const std::uint8_t* above = zeros_.data();
  for (std::size_t y = pass.top; y < header.height; y += pass.down, rows += 1 + row_size) {
    if (*rows >= kPngFilters) fail_as_damaged_png("a row has filter " + std::to_string(*rows));
    const std::span row(rows + 1, row_size);
    unfilter(static_cast<PngFilter>(*rows), row, above, pixel);
    above = row.data();
    std::uint8_t* start = to + (y * header.width + pass.left) * pixel;
    put_in_order(row, header.bits, pass.across == 1 ? start : row_.data());
    if (pass.across == 1) continue;
    for (std::size_t i = 0; i < columns; ++i) {
      std::copy_n(row_.data() + i * pixel, pixel, start + i * pass.across * pixel);
    }
  }
}

}  // namespace kv::polarization
