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

[[noreturn]] void refuse(const std::string& what) {
  throw Fault(
      FaultKind::unsupported,
      "the TIFF page " + what + "; a raw frame is grey with 8 or 16 bits, unsigned, black being 0");
}

void check_is_raw_frame(TIFF* tiff) {
  const std::uint16_t photometric = field(tiff, TIFFTAG_PHOTOMETRIC);
  const int channels = field(tiff, TIFFTAG_SAMPLESPERPIXEL);
  const int bits = field(tiff, TIFFTAG_BITSPERSAMPLE);
  if (photometric == PHOTOMETRIC_PALETTE) refuse("is palette colour");
  if (channels != 1) refuse("has " + std::to_string(channels) + " channels");
  if (field(tiff, TIFFTAG_SAMPLEFORMAT) == SAMPLEFORMAT_IEEEFP) refuse("has float samples");
  if (field(tiff, TIFFTAG_SAMPLEFORMAT) == SAMPLEFORMAT_INT) refuse("has signed samples");
  if (bits != 8 && bits != 16) refuse("has " + std::to_string(bits) + " bits a sample");
  if (photometric != PHOTOMETRIC_MINISBLACK && photometric != PHOTOMETRIC_CFA) {
    refuse("is not a plain grey image");
  }
  const std::uint16_t compression = field(tiff, TIFFTAG_COMPRESSION);
  if (TIFFIsCODECConfigured(compression) == 0) {
    throw Fault(FaultKind::unsupported,
                "the TIFF page is compressed by method " + std::to_string(compression) +
                    ", which this build's libtiff lacks; store it by deflate or LZW, or without "
                    "compression");
  }
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
std::uint64_t most_ratio(TIFF* tiff) {
  switch (field(tiff, TIFFTAG_COMPRESSION)) {
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

/// Holds each part's size against the bytes that it is stored in.
void check_parts(TIFF* tiff, const TiffPage& page, std::uint64_t file_size) {
  const std::uint64_t ratio = most_ratio(tiff);
  const std::uint64_t row = std::uint64_t{page.part_width} * page.bytes_a_sample();
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

}  // namespace

TiffPage examine_page(TIFF* tiff, std::uint64_t file_size) {
  check_is_raw_frame(tiff);
  TiffPage page;
  page.width = field<std::uint32_t>(tiff, TIFFTAG_IMAGEWIDTH);
  page.height = field<std::uint32_t>(tiff, TIFFTAG_IMAGELENGTH);
  page.bits = field(tiff, TIFFTAG_BITSPERSAMPLE);
  page.bit_depth = bit_depth_of(tiff, page.bits);
  page.tiled = TIFFIsTiled(tiff) != 0;
  page.part_width = page.tiled ? field<std::uint32_t>(tiff, TIFFTAG_TILEWIDTH) : page.width;
  page.part_height = page.tiled
                         ? field<std::uint32_t>(tiff, TIFFTAG_TILELENGTH)
                         : std::min(field<std::uint32_t>(tiff, TIFFTAG_ROWSPERSTRIP), page.height);
  if (page.width == 0 || page.height == 0 || page.part_width == 0 || page.part_height == 0) {
    throw Fault(FaultKind::file,
                "the TIFF is damaged: a side of its page, strips or tiles is 0; an "
                "intact one is needed");
  }
  page.orientation = orientation_note(field(tiff, TIFFTAG_ORIENTATION));
  check_parts(tiff, page, file_size);
  return page;
}

std::uint64_t most_pixels(TIFF* tiff, const TiffPage& page, std::uint64_t file_size) {
  const std::uint64_t ratio = most_ratio(tiff);
  return file_size > UINT64_MAX / ratio ? UINT64_MAX : file_size * ratio / page.bytes_a_sample();
}

}  // namespace kv::polarization
