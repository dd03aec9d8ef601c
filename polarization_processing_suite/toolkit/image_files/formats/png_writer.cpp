#include "toolkit/image_files/formats/png_writer.h"

#include <algorithm>
#include <utility>

#include "toolkit/image_files/deflate/zlib_encoder.h"
#include "toolkit/image_files/formats/png_chunks.h"
#include "toolkit/image_files/formats/png_filters.h"
#include "toolkit/image_files/formats/png_header.h"
#include "toolkit/image_files/samples.h"
#include "toolkit/image_files/stored_samples.h"

namespace kv::polarization {
namespace {

/// A row of bytes with its margins, at first all 0.
class PaddedRow {
 public:
  explicit PaddedRow(std::size_t size) : bytes_(size + 2 * kFilterMargin), size_(size) {
    std::fill(bytes_.begin(), bytes_.end(), std::uint8_t{0});
  }
  std::span<std::uint8_t> bytes() { return {bytes_.data() + kFilterMargin, size_}; }

 private:
  Buffer<std::uint8_t> bytes_;
  std::size_t size_;
};

/// Rows that are compressed at once: as many as a block of deflate holds, so that they stay in the
/// processor's caches, and one at least.
std::size_t rows_a_band(std::size_t stored_row, std::size_t rows) {
  return std::clamp<std::size_t>(kMostOfBlock / stored_row, 1, rows);
}

/// put_row(row, place) gives the bytes of a row.
template <class PutRow>
void write_png(PendingFile& file, const PngHeader& header, std::size_t pixel, PngFilter filter_kind,
               const WriteOptions& options, PutRow put_row) {
  const Compression compression = options.compression.value_or(Compression::fast);
  if (compression == Compression::none) filter_kind = PngFilter::none;
  write_png_header(file, header);
  write_png_text(file, "Title", options.title);
  write_png_text(file, kPngProvenance, options.provenance);

  const std::size_t rows = header.height;
  const std::size_t row_size = header.width * pixel;
  const std::size_t band_rows = rows_a_band(1 + row_size, rows);
  PaddedRow here(row_size);
  PaddedRow above(row_size);
  Buffer<std::uint8_t> band(band_rows * (1 + row_size) + kFilterMargin);
  ZlibEncoder encoder(compression);
  std::size_t filled = 0;
  for (std::size_t row = 0; row < rows; ++row) {
    put_row(row, here.bytes());
    band[filled] = static_cast<std::uint8_t>(filter_kind);
    filter(filter_kind, here.bytes(), above.bytes().data(), pixel, band.data() + filled + 1);
    filled += 1 + row_size;
    std::swap(here, above);
    const bool last = row + 1 == rows;
    if (!last && (row + 1) % band_rows != 0) continue;
    const auto stream = encoder.encode({band.data(), filled}, last);
    if (!stream.empty()) write_png_chunk(file, "IDAT", stream);
    filled = 0;
  }
  write_png_chunk(file, "IEND", {});
}

}  // namespace

/// Differences to the left make files a few per cent larger than Paeth's, but are read in half the
/// time.
void write_png_grey(PendingFile& file, const GreyImage& image, const WriteOptions& options) {
  const std::size_t sample_size = bytes_a_sample(image.bit_depth);
  const auto width = static_cast<std::size_t>(image.width);
  const PngHeader header{static_cast<std::uint32_t>(image.width),
                         static_cast<std::uint32_t>(image.height),
                         static_cast<int>(8 * sample_size), PngColour::grey};
  write_png(file, header, sample_size, PngFilter::sub, options,
            [&](std::size_t row, std::span<std::uint8_t> to) {
              const auto samples = image.samples.subspan(row * width, width);
              if (sample_size == 1) return narrow(samples, to.data());
              swap_bytes(samples, reinterpret_cast<std::uint16_t*>(to.data()));
            });
}

void write_png_picture(PendingFile& file, const Picture& picture, const WriteOptions& options) {
  const PngHeader header{static_cast<std::uint32_t>(picture.width),
                         static_cast<std::uint32_t>(picture.height), 8,
                         picture.channels == 1 ? PngColour::grey : PngColour::rgb};
  write_png(file, header, static_cast<std::size_t>(picture.channels), PngFilter::paeth, options,
            [&](std::size_t row, std::span<std::uint8_t> to) {
              std::copy_n(picture.bytes.data() + row * to.size(), to.size(), to.data());
            });
}

}  // namespace kv::polarization
