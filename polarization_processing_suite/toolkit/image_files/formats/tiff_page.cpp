// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "toolkit/image_files/formats/tiff_page.h"

#include <algorithm>
#include <bit>

#include "kv/polarization/fault.h"
#include "toolkit/image_files/formats/deflate_bound.h"

namespace kv::polarization {
namespace {

template <class Number = std::uint16_t>
Number field(TIFF* tiff, ttag_t tag) {
  Number value = 0;
  TIFFGetFieldDefaulted(tiff, tag, &value);
  return value;
}

[[noreturn]] void refuse_page(const std::string& what, const char* wanted) {
  throw Fault(FaultKind::unsupported, "the TIFF page " + what + "; " + wanted);
}

constexpr const char* kRawFrame = "a raw frame is grey with 8 or 16 bits, unsigned, black being 0";
constexpr const char* kAnyImage =
    "an image has samples of 8 or 16 bits, unsigned, or floats, black being 0, and its channels "
    "side by side";

void check_compression(const TiffPage& page) {
  const auto compression = static_cast<std::uint16_t>(page.compression);
  if (TIFFIsCODECConfigured(compression) != 0) return;
  throw Fault(FaultKind::unsupported,
              "the TIFF page is compressed by method " + std::to_string(compression) +
                  ", which this build's libtiff lacks; store it by deflate or LZW, or without "
                  "compression");
}

std::string channels_text(const TiffPage& page) {
  return "has " + std::to_string(page.channels) + " channels";
}

std::string bits_text(const TiffPage& page) {
  return "has " + std::to_string(page.bits) + " bits a sample";
}

int bit_depth_of(TIFF* tiff, int bits) {
  std::uint16_t maximum = 0;
  if (TIFFGetField(tiff, TIFFTAG_MAXSAMPLEVALUE, &maximum) != 1 || maximum == 0) return bits;
  return std::min(bits, static_cast<int>(std::bit_width(maximum)));
}

std::string orientation_note(std::uint16_t orientation) {
  if (orientation == ORIENTATION_TOPLEFT) return "";
  return "the TIFF page asks to be shown in orientation " + std::to_string(orientation) +
         "; its samples are taken as they are stored, rows from the top and columns from the left";
}

/// How many bytes may come out of one, at most.
std::uint64_t most_ratio(const TiffPage& page) {
  switch (page.compression) {
    case COMPRESSION_NONE:
      return 1;
    case COMPRESSION_PACKBITS:
      return 64;  // a run of 128 from two bytes
    case COMPRESSION_DEFLATE:
    case COMPRESSION_ADOBE_DEFLATE:
      return kDeflateRatio;
    case COMPRESSION_LZW:
      return 4096;  // the longest string of a table of 4096, from a code of 9 to 12 bits
    default:
      return 32768;  // zstd: a block of 128 kB from 4 bytes; the other methods stay below it
  }
}

}  // namespace

TiffPage read_fields(TIFF* tiff) {
  TiffPage page;
  page.width = field<std::uint32_t>(tiff, TIFFTAG_IMAGEWIDTH);
  page.height = field<std::uint32_t>(tiff, TIFFTAG_IMAGELENGTH);
  page.channels = field(tiff, TIFFTAG_SAMPLESPERPIXEL);
  page.bits = field(tiff, TIFFTAG_BITSPERSAMPLE);
  page.bit_depth = bit_depth_of(tiff, page.bits);
  page.sample_format = field(tiff, TIFFTAG_SAMPLEFORMAT);
  page.photometric = field(tiff, TIFFTAG_PHOTOMETRIC);
  page.compression = field(tiff, TIFFTAG_COMPRESSION);
  page.apart = page.channels > 1 && field(tiff, TIFFTAG_PLANARCONFIG) == PLANARCONFIG_SEPARATE;
  page.tiled = TIFFIsTiled(tiff) != 0;
  page.part_width = page.tiled ? field<std::uint32_t>(tiff, TIFFTAG_TILEWIDTH) : page.width;
  page.part_height = page.tiled
                         ? field<std::uint32_t>(tiff, TIFFTAG_TILELENGTH)
                         : std::min(field<std::uint32_t>(tiff, TIFFTAG_ROWSPERSTRIP), page.height);
  page.orientation = orientation_note(field(tiff, TIFFTAG_ORIENTATION));
  return page;
}

void check_is_raw_frame(const TiffPage& page) {
  if (page.photometric == PHOTOMETRIC_PALETTE) refuse_page("is palette colour", kRawFrame);
  if (page.channels != 1) refuse_page(channels_text(page), kRawFrame);
  if (page.sample_format == SAMPLEFORMAT_IEEEFP) refuse_page("has float samples", kRawFrame);
  if (page.sample_format == SAMPLEFORMAT_INT) refuse_page("has signed samples", kRawFrame);
  if (page.bits != 8 && page.bits != 16) refuse_page(bits_text(page), kRawFrame);
  if (page.photometric != PHOTOMETRIC_MINISBLACK && page.photometric != PHOTOMETRIC_CFA) {
    refuse_page("is not a plain grey image", kRawFrame);
  }
  check_compression(page);
}

ElementType check_is_image(const TiffPage& page) {
  constexpr int plain[] = {PHOTOMETRIC_MINISBLACK, PHOTOMETRIC_CFA, PHOTOMETRIC_RGB};
  if (std::find(std::begin(plain), std::end(plain), page.photometric) == std::end(plain)) {
    refuse_page("is neither grey nor RGB", kAnyImage);
  }
  if (page.sample_format == SAMPLEFORMAT_INT) refuse_page("has signed samples", kAnyImage);
  const bool is_float = page.sample_format == SAMPLEFORMAT_IEEEFP;
  if (is_float ? page.bits != 32 : page.bits != 8 && page.bits != 16) {
    refuse_page(bits_text(page), kAnyImage);
  }
  if (page.channels < 1) refuse_page(channels_text(page), kAnyImage);
  if (page.apart) refuse_page("has each of its channels apart", kAnyImage);
  check_compression(page);
  if (is_float) return ElementType::float32;
  return page.bits == 8 ? ElementType::uint8 : ElementType::uint16;
}

void check_parts(TIFF* tiff, const TiffPage& page, std::uint64_t file_size) {
  if (page.width == 0 || page.height == 0 || page.part_width == 0 || page.part_height == 0) {
    throw Fault(FaultKind::file,
                "the TIFF is damaged: a side of its page, strips or tiles is 0; an "
                "intact one is needed");
  }
  const std::uint64_t ratio = most_ratio(page);
  const std::uint64_t row = std::uint64_t{page.part_width} * page.pixel_bytes();
  const std::uint32_t across = (page.width - 1) / page.part_width + 1;
  const std::uint32_t down = (page.height - 1) / page.part_height + 1;
  for (std::uint64_t part = 0; part < std::uint64_t{across} * down; ++part) {
    const std::uint64_t top = part / across * page.part_height;
    const std::uint64_t rows = page.tiled
                                   ? page.part_height
                                   : std::min<std::uint64_t>(page.part_height, page.height - top);
    const auto index = static_cast<std::uint32_t>(part);
    const std::uint64_t offset = TIFFGetStrileOffset(tiff, index);
    const std::uint64_t available = offset < file_size ? file_size - offset : 0;
    const std::uint64_t stored = std::min(TIFFGetStrileByteCount(tiff, index), available);
    if (rows > stored * ratio / row) {
      throw Fault(FaultKind::file, "the TIFF is damaged or truncated: part " +
                                       std::to_string(part) + " of " +
                                       std::to_string(page.part_width) + " x " +
                                       std::to_string(rows) + " pixels cannot come out of its " +
                                       std::to_string(stored) + " bytes; an intact one is needed");
    }
  }
}

std::uint64_t most_pixels(const TiffPage& page, std::uint64_t file_size) {
  const std::uint64_t ratio = most_ratio(page);
  return file_size > UINT64_MAX / ratio ? UINT64_MAX : file_size * ratio / page.pixel_bytes();
}

}  // namespace kv::polarization
