#include <algorithm>
#include <array>
#include <string>
#include <utility>

#include "kv/polarization/fault.h"
#include "toolkit/image_files/deflate/zlib_library.h"
#include "toolkit/image_files/formats/deflate_bound.h"
#include "toolkit/image_files/formats/formats.h"
#include "toolkit/image_files/formats/png_chunks.h"
#include "toolkit/image_files/formats/png_filters.h"
#include "toolkit/image_files/formats/png_header.h"
#include "toolkit/image_files/formats/png_writer.h"
#include "toolkit/image_files/samples.h"
#include "toolkit/image_files/stored_samples.h"

namespace kv::polarization {
namespace {

/// Which pixels of an image are stored as an image of their own.
struct Pass {
  std::size_t left, top;     ///< the first one
  std::size_t across, down;  ///< from one to the next

  std::size_t columns(const Frame& frame) const {
    return (static_cast<std::size_t>(frame.width) + across - 1 - left) / across;
  }
  std::size_t rows(const Frame& frame) const {
    return (static_cast<std::size_t>(frame.height) + down - 1 - top) / down;
  }
  /// Each row comes after its filter.
  std::size_t bytes(const Frame& frame, std::size_t sample_size) const {
    return columns(frame) == 0 ? 0 : rows(frame) * (1 + columns(frame) * sample_size);
  }
};

constexpr std::array<Pass, 1> kPlain = {{{0, 0, 1, 1}}};
constexpr std::array<Pass, 7> kInterlaced = {{{0, 0, 8, 8},
                                              {4, 0, 8, 8},
                                              {0, 4, 4, 8},
                                              {2, 0, 4, 4},
                                              {0, 2, 2, 4},
                                              {1, 0, 2, 2},
                                              {0, 1, 1, 2}}};

/// Deflated bytes need no more than that, even if they are written as badly as one can.
constexpr std::uint64_t most_deflated_badly(std::uint64_t bytes) { return 6 * bytes + (1u << 16); }

class PngReader : public FrameReader {
 public:
  explicit PngReader(SourcePointer source) : source_(std::move(source)) {}
  std::size_t count() const override { return 1; }

 private:
  void load(std::size_t, Frame& frame) override {
    const PngHeader header = read_png_header(*source_);
    check_is_raw_frame(header);
    const std::size_t sample_size = bytes_a_sample(header.bits);
    reshape(frame, {"PNG", header.width, header.height, header.bits},
            most_inflated(source_->size()) / sample_size);
    const std::span<const Pass> passes =
        header.interlaced ? std::span<const Pass>(kInterlaced) : kPlain;
    std::size_t size = 0;
    for (const Pass& pass : passes) size += pass.bytes(frame, sample_size);
    inflate(size);
    std::uint8_t* from = rows_.data();
    for (const Pass& pass : passes) {
      place(pass, from, sample_size, frame);
      from += pass.bytes(frame, sample_size);
    }
  }

  /// The content of all IDAT chunks is one stream.
  void inflate(std::size_t size) {
    const std::uint64_t most = std::min(source_->size(), most_deflated_badly(size));
    stream_.resize(static_cast<std::size_t>(most));
    std::size_t used = 0;
    for (PngChunk chunk = png_chunk_at(*source_, kPngHeaderEnd); chunk.kind != "IEND";
         chunk = png_chunk_at(*source_, chunk.end())) {
      if (chunk.kind == "IDAT") {
        if (chunk.length + kPngChecksum > most - used) {
          fail_as_damaged_png("it has more data than pixels");
        }
        read_png_chunk(*source_, chunk, stream_.data() + used);
        used += chunk.length;
      } else if (!chunk.is_ancillary() && chunk.kind != "PLTE") {
        fail_as_damaged_png("its chunk " + chunk.kind + " is of no known kind");
      }
    }
    rows_.resize(size);
    if (!inflate_stream({stream_.data(), used}, rows_)) {
      fail_as_damaged_png("its stream of pixels does not give its " + std::to_string(size) +
                          " bytes");
    }
  }

  /// Unfilters the rows of a pass at their place, and puts their samples into the frame.
  void place(const Pass& pass, std::uint8_t* from, std::size_t sample_size, Frame& frame) {
    const std::size_t columns = pass.columns(frame);
    if (columns == 0) return;
    const std::size_t row_size = columns * sample_size;
    zeros_.resize(row_size);
    std::fill(zeros_.begin(), zeros_.end(), std::uint8_t{0});
    samples_.resize(columns);
    const std::uint8_t* above = zeros_.data();
    for (std::size_t y = pass.top; y < static_cast<std::size_t>(frame.height); y += pass.down) {
      if (*from >= kPngFilters) fail_as_damaged_png("a row has filter " + std::to_string(*from));
      const std::span row(from + 1, row_size);
      unfilter(static_cast<PngFilter>(*from), row, above, sample_size);
      std::uint16_t* to = frame.samples.data() + y * static_cast<std::size_t>(frame.width);
      if (pass.across == 1) {
        decode(row, sample_size, {to, columns});
      } else {
        decode(row, sample_size, samples_);
        for (std::size_t i = 0; i < columns; ++i) to[pass.left + i * pass.across] = samples_[i];
      }
      above = row.data();
      from += 1 + row_size;
    }
  }

  static void decode(std::span<const std::uint8_t> row, std::size_t sample_size,
                     std::span<std::uint16_t> samples) {
    if (sample_size == 1) return widen(row.data(), samples);
    map_samples<std::uint16_t>(row.data(), samples.data(), samples.size(),
                               [](std::uint16_t sample) { return sample << 8 | sample >> 8; });
  }

  SourcePointer source_;
  Buffer<std::uint8_t> stream_;
  Buffer<std::uint8_t> rows_;
  Buffer<std::uint8_t> zeros_;
  Buffer<std::uint16_t> samples_;
};

std::unique_ptr<FrameReader> open(SourcePointer source) {
  return std::make_unique<PngReader>(std::move(source));
}

}  // namespace

FormatFunctions png_functions() {
  return {.open = open, .write_grey = write_png_grey, .write_picture = write_png_picture};
}

}  // namespace kv::polarization
