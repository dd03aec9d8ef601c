#include "toolkit/image_files/tiff_file.h"

#include <algorithm>
#include <bit>
#include <string>
#include <utility>
#include <vector>

#include "kv/polarization/fault.h"
#include "toolkit/image_files/tiff_stream.h"

namespace kv::polarization {
namespace {

[[noreturn]] void fail_as_damaged() {
  throw Fault(FaultKind::file, "the TIFF is damaged or truncated (" + last_tiff_message() +
                                   "); an intact one is needed");
}

std::uint16_t field(TIFF* tiff, ttag_t tag) {
  std::uint16_t value = 0;
  TIFFGetFieldDefaulted(tiff, tag, &value);
  return value;
}

void check_is_raw_frame(TIFF* tiff) {
  const int channels = field(tiff, TIFFTAG_SAMPLESPERPIXEL);
  const int bits = field(tiff, TIFFTAG_BITSPERSAMPLE);
  const std::uint16_t photometric = field(tiff, TIFFTAG_PHOTOMETRIC);
  const std::string wanted = "; a raw frame is grey with 8 or 16 bits, unsigned, black being 0";
  if (photometric == PHOTOMETRIC_PALETTE)
    throw Fault(FaultKind::file, "the TIFF page is palette colour" + wanted);
  if (channels != 1) {
    throw Fault(FaultKind::file,
                "the TIFF page has " + std::to_string(channels) + " channels" + wanted);
  }
  if (field(tiff, TIFFTAG_SAMPLEFORMAT) == SAMPLEFORMAT_IEEEFP) {
    throw Fault(FaultKind::file, "the TIFF page has float samples" + wanted);
  }
  if (field(tiff, TIFFTAG_SAMPLEFORMAT) == SAMPLEFORMAT_INT) {
    throw Fault(FaultKind::file, "the TIFF page has signed samples" + wanted);
  }
  if (bits != 8 && bits != 16) {
    throw Fault(FaultKind::file,
                "the TIFF page has " + std::to_string(bits) + " bits a sample" + wanted);
  }
  if (photometric != PHOTOMETRIC_MINISBLACK && photometric != PHOTOMETRIC_CFA) {
    throw Fault(FaultKind::file, "the TIFF page is not a plain grey image" + wanted);
  }
}

/// The bits that the maximum sample value needs, but no more than are stored.
int bit_depth_of(TIFF* tiff) {
  const int bits = field(tiff, TIFFTAG_BITSPERSAMPLE);
  std::uint16_t maximum = 0;
  if (TIFFGetField(tiff, TIFFTAG_MAXSAMPLEVALUE, &maximum) != 1 || maximum == 0) return bits;
  return std::min(bits, static_cast<int>(std::bit_width(maximum)));
}

template <class Stored>
void read_strips(TIFF* tiff, Frame& frame) {
  const auto width = static_cast<std::size_t>(frame.width);
  std::vector<Stored> line(static_cast<std::size_t>(TIFFScanlineSize(tiff)) / sizeof(Stored));
  for (int row = 0; row < frame.height; ++row) {
    if (TIFFReadScanline(tiff, line.data(), static_cast<std::uint32_t>(row)) != 1) {
      fail_as_damaged();
    }
    std::copy_n(line.begin(), width, frame.samples.data() + pixel_count(frame.width, row));
  }
}

template <class Stored>
void read_tiles(TIFF* tiff, Frame& frame) {
  std::uint32_t tile_width = 0;
  std::uint32_t tile_height = 0;
  TIFFGetField(tiff, TIFFTAG_TILEWIDTH, &tile_width);
  TIFFGetField(tiff, TIFFTAG_TILELENGTH, &tile_height);
  const auto width = static_cast<std::uint32_t>(frame.width);
  const auto height = static_cast<std::uint32_t>(frame.height);
  std::vector<Stored> tile(static_cast<std::size_t>(TIFFTileSize(tiff)) / sizeof(Stored));
  for (std::uint32_t top = 0; top < height; top += tile_height) {
    for (std::uint32_t left = 0; left < width; left += tile_width) {
      if (TIFFReadTile(tiff, tile.data(), left, top, 0, 0) < 0) fail_as_damaged();
      const std::uint32_t columns = std::min(tile_width, width - left);
      for (std::uint32_t row = top; row < std::min(top + tile_height, height); ++row) {
        std::copy_n(tile.begin() + static_cast<std::ptrdiff_t>(row - top) * tile_width, columns,
                    frame.samples.begin() + static_cast<std::ptrdiff_t>(row) * width + left);
      }
    }
  }
}

template <class Stored>
void read_samples(TIFF* tiff, Frame& frame) {
  if (TIFFIsTiled(tiff)) {
    read_tiles<Stored>(tiff, frame);
  } else {
    read_strips<Stored>(tiff, frame);
  }
}

class TiffReader : public FrameReader {
 public:
  explicit TiffReader(InputFile file)
      : file_(std::make_unique<InputFile>(std::move(file))), tiff_(open_tiff_stream(*file_)) {
    if (!tiff_) fail_as_damaged();
    count_ = TIFFNumberOfDirectories(tiff_.get());
    if (!last_tiff_message().empty()) fail_as_damaged();
  }

  std::size_t count() const override { return count_; }

  Frame read(std::size_t index) override {
    TIFF* tiff = tiff_.get();
    clear_tiff_message();
    if (TIFFSetDirectory(tiff, static_cast<tdir_t>(index)) != 1) fail_as_damaged();
    check_is_raw_frame(tiff);
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    TIFFGetField(tiff, TIFFTAG_IMAGEWIDTH, &width);
    TIFFGetField(tiff, TIFFTAG_IMAGELENGTH, &height);
    Frame frame = make_frame(width, height, bit_depth_of(tiff));
    if (field(tiff, TIFFTAG_BITSPERSAMPLE) == 8) {
      read_samples<std::uint8_t>(tiff, frame);
    } else {
      read_samples<std::uint16_t>(tiff, frame);
    }
    return frame;
  }

 private:
  std::unique_ptr<InputFile> file_;
  TiffPointer tiff_;
  std::size_t count_ = 0;
};

struct Layout {
  int width;
  int height;
  int channels;
  int bits;
  int sample_format;
};

/// Sets the fields that every page needs. Files stay uncompressed, as programs are to read them.
void set_fields(TIFF* tiff, const Layout& layout) {
  TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, layout.width);
  TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, layout.height);
  TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, layout.channels);
  TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, layout.bits);
  TIFFSetField(tiff, TIFFTAG_SAMPLEFORMAT, layout.sample_format);
  TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISBLACK);
  TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
  TIFFSetField(tiff, TIFFTAG_COMPRESSION, COMPRESSION_NONE);
  TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, TIFFDefaultStripSize(tiff, 0));
}

/// Writes the rows in the machine's own byte order, which the file's header records.
void write_rows(PendingFile& file, TiffPointer tiff, int height, const void* pixels,
                std::size_t row_size) {
  const auto* row = static_cast<const std::uint8_t*>(pixels);
  for (int index = 0; index < height; ++index, row += row_size) {
    // libtiff asks for a mutable row, but changes it only to swap bytes.
    if (TIFFWriteScanline(tiff.get(), const_cast<std::uint8_t*>(row),
                          static_cast<std::uint32_t>(index)) != 1) {
      file.fail();
    }
  }
  if (TIFFFlush(tiff.get()) != 1) file.fail();
}

}  // namespace

bool tiff_available() { return true; }

std::unique_ptr<FrameReader> open_tiff(InputFile file) {
  return std::make_unique<TiffReader>(std::move(file));
}

void write_tiff(PendingFile& file, const GreyImage& image) {
  TiffPointer tiff = open_tiff_stream(file);
  if (!tiff) file.fail();
  const int bits = image.bit_depth > 8 ? 16 : 8;
  const auto width = static_cast<std::size_t>(image.width);
  set_fields(tiff.get(), {image.width, image.height, 1, bits, SAMPLEFORMAT_UINT});
  TIFFSetField(tiff.get(), TIFFTAG_MAXSAMPLEVALUE, full_scale(image.bit_depth));
  if (bits == 16) {
    write_rows(file, std::move(tiff), image.height, image.samples.data(), 2 * width);
  } else {
    const std::vector<std::uint8_t> bytes(image.samples.begin(), image.samples.end());
    write_rows(file, std::move(tiff), image.height, bytes.data(), width);
  }
}

void write_tiff(PendingFile& file, int width, int height, std::span<const float> pairs) {
  TiffPointer tiff = open_tiff_stream(file);
  if (!tiff) file.fail();
  set_fields(tiff.get(), {width, height, 2, 32, SAMPLEFORMAT_IEEEFP});
  // Without this the second channel would pass for an alpha channel of unknown kind.
  const std::uint16_t unspecified = EXTRASAMPLE_UNSPECIFIED;
  TIFFSetField(tiff.get(), TIFFTAG_EXTRASAMPLES, 1, &unspecified);
  write_rows(file, std::move(tiff), height, pairs.data(),
             2 * sizeof(float) * static_cast<std::size_t>(width));
}

}  // namespace kv::polarization
