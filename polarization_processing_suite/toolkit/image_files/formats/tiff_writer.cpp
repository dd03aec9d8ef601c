// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "toolkit/image_files/formats/tiff_writer.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <new>
#include <vector>

#include "platform/files.h"
#include "toolkit/image_files/formats/tiff_strips.h"
#include "toolkit/image_files/samples.h"
#include "toolkit/image_files/stored_samples.h"

namespace kv::polarization {
namespace {

/// A strip a row, as libtiff proposes for wide images, costs more than the writing.
constexpr std::size_t kStripBytes = 1u << 20;

/// Of strips in the file, as they are in memory: copied between such places, the whole takes 40 per
/// cent less time.
constexpr std::size_t kAlignment = 64;

struct PageLayout {
  int width;
  int height;
  int channels;
  int bits;
  int sample_format;
  int photometric;

  std::size_t sample_bytes() const { return static_cast<std::size_t>(bits / 8); }
  std::size_t row_samples() const {
    return static_cast<std::size_t>(width) * static_cast<std::size_t>(channels);
  }
  std::size_t row_bytes() const { return row_samples() * sample_bytes(); }
  std::uint32_t rows_a_strip() const {
    std::size_t rows = std::max<std::size_t>(kStripBytes / row_bytes(), 1);
    if (rows > kAlignment) rows -= rows % kAlignment;
    return static_cast<std::uint32_t>(std::min(rows, static_cast<std::size_t>(height)));
  }
  int colours() const { return photometric == PHOTOMETRIC_RGB ? 3 : 1; }
};

/// Fills up the file's header, or what is behind the page before.
void align_first_strip(PendingFile& file) {
  const std::array<char, kAlignment> zeros{};
  if (platform::seek(file.stream(), 0, SEEK_END) != 0) file.fail();
  const auto end = static_cast<std::size_t>(platform::position(file.stream()));
  file.write(zeros.data(), (0 - end) % kAlignment);
}

Compression compression_of(const WriteOptions& options) {
  return options.compression.value_or(Compression::none);
}

/// A search finds floats that repeat as they are; without one, bytes of equal weight are alike.
TiffPredictor predictor_of(const PageLayout& layout, Compression compression) {
  if (layout.sample_format != SAMPLEFORMAT_IEEEFP) return TiffPredictor::horizontal;
  return compression == Compression::small ? TiffPredictor::none : TiffPredictor::floating_point;
}

/// It takes all the values that are given here, as long as there is memory for them.
template <class... Values>
void set_field(TIFF* tiff, std::uint32_t tag, Values... values) {
  if (TIFFSetField(tiff, tag, values...) != 1) throw std::bad_alloc();
}

void set_compression(TIFF* tiff, const PageLayout& layout, Compression compression) {
  if (compression == Compression::none) {
    set_field(tiff, TIFFTAG_COMPRESSION, COMPRESSION_NONE);
    return;
  }
  set_field(tiff, TIFFTAG_COMPRESSION, COMPRESSION_ADOBE_DEFLATE);
  set_field(tiff, TIFFTAG_PREDICTOR, static_cast<int>(predictor_of(layout, compression)));
}

/// Sets the fields that every page needs.
void set_fields(TIFF* tiff, const PageLayout& layout, const WriteOptions& options) {
  set_field(tiff, TIFFTAG_IMAGEWIDTH, layout.width);
  set_field(tiff, TIFFTAG_IMAGELENGTH, layout.height);
  set_field(tiff, TIFFTAG_SAMPLESPERPIXEL, layout.channels);
  set_field(tiff, TIFFTAG_BITSPERSAMPLE, layout.bits);
  set_field(tiff, TIFFTAG_SAMPLEFORMAT, layout.sample_format);
  set_field(tiff, TIFFTAG_PHOTOMETRIC, layout.photometric);
  set_field(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
  set_compression(tiff, layout, compression_of(options));
  set_field(tiff, TIFFTAG_ROWSPERSTRIP, layout.rows_a_strip());
  if (!options.title.empty()) {
    set_field(tiff, TIFFTAG_IMAGEDESCRIPTION, options.title.c_str());
  }
  if (!options.provenance.empty()) {
    set_field(tiff, TIFFTAG_SOFTWARE, options.provenance.c_str());
  }
  if (layout.channels > layout.colours()) {
    // Without this they would pass for alpha channels of unknown kind.
    const std::vector<std::uint16_t> kinds(
        static_cast<std::size_t>(layout.channels - layout.colours()), EXTRASAMPLE_UNSPECIFIED);
    set_field(tiff, TIFFTAG_EXTRASAMPLES, static_cast<int>(kinds.size()), kinds.data());
  }
}

/// Writes the strips, in the machine's own byte order, which the file's header records.
/// bytes_of(first row, rows) gives their bytes.
template <class BytesOf>
void write_page(PendingFile& file, TIFF* tiff, const PageLayout& layout,
                const WriteOptions& options, int greatest_sample, BytesOf bytes_of) {
  errno = 0;
  if (tiff == nullptr) file.fail();
  align_first_strip(file);
  set_fields(tiff, layout, options);
  if (greatest_sample != 0) set_field(tiff, TIFFTAG_MAXSAMPLEVALUE, greatest_sample);
  const Compression compression = compression_of(options);
  TiffStripEncoder encoder(compression, predictor_of(layout, compression), layout.row_samples(),
                           layout.sample_bytes(), static_cast<std::size_t>(layout.channels));
  const auto height = static_cast<std::size_t>(layout.height);
  std::uint32_t strip = 0;
  for (std::size_t row = 0; row < height; row += layout.rows_a_strip(), ++strip) {
    const std::size_t rows = std::min<std::size_t>(layout.rows_a_strip(), height - row);
    const auto* pixels = static_cast<const std::uint8_t*>(bytes_of(row, rows));
    const std::span bytes = compression == Compression::none
                                ? std::span(pixels, rows * layout.row_bytes())
                                : encoder.encode(pixels, rows);
    // libtiff asks for mutable bytes, but changes them only to swap them.
    auto* data = const_cast<std::uint8_t*>(bytes.data());
    if (TIFFWriteRawStrip(tiff, strip, data, static_cast<tmsize_t>(bytes.size())) < 0) file.fail();
  }
}

/// Where the rows of pixels begin that lie in memory as they are stored.
auto rows_at(const void* pixels, const PageLayout& layout) {
  return [first = static_cast<const std::uint8_t*>(pixels), size = layout.row_bytes()](
             std::size_t row, std::size_t) -> const void* { return first + row * size; };
}

}  // namespace

void write_tiff_page(PendingFile& file, const TiffStream& stream, const GreyImage& image,
                     const WriteOptions& options) {
  const std::size_t sample_size = bytes_a_sample(image.bit_depth);
  const PageLayout layout{
      image.width,       image.height,          1, static_cast<int>(8 * sample_size),
      SAMPLEFORMAT_UINT, PHOTOMETRIC_MINISBLACK};
  const int greatest = full_scale(image.bit_depth);
  if (sample_size == 2) {
    return write_page(file, stream.get(), layout, options, greatest,
                      rows_at(image.samples.data(), layout));
  }
  Buffer<std::uint8_t> room;
  write_page(file, stream.get(), layout, options, greatest,
             [&](std::size_t row, std::size_t rows) -> const void* {
               const auto width = static_cast<std::size_t>(image.width);
               room.resize(rows * width);
               narrow(image.samples.subspan(row * width, rows * width), room.data());
               return room.data();
             });
}

void write_tiff_page(PendingFile& file, const TiffStream& stream, const FloatImage& image,
                     const WriteOptions& options) {
  const PageLayout layout{image.width, image.height,        image.channels,
                          32,          SAMPLEFORMAT_IEEEFP, PHOTOMETRIC_MINISBLACK};
  write_page(file, stream.get(), layout, options, 0, rows_at(image.values.data(), layout));
}

void write_tiff_page(PendingFile& file, const TiffStream& stream, const Picture& picture,
                     const WriteOptions& options) {
  const PageLayout layout{
      picture.width,     picture.height,
      picture.channels,  8,
      SAMPLEFORMAT_UINT, picture.channels == 1 ? PHOTOMETRIC_MINISBLACK : PHOTOMETRIC_RGB};
  write_page(file, stream.get(), layout, options, 0, rows_at(picture.bytes.data(), layout));
}

std::uint64_t tiff_bytes(const GreyImage& image) {
  return image.samples.size() * bytes_a_sample(image.bit_depth);
}
std::uint64_t tiff_bytes(const FloatImage& image) { return image.values.size_bytes(); }
std::uint64_t tiff_bytes(const Picture& picture) { return picture.bytes.size(); }

}  // namespace kv::polarization
