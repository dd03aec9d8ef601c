#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "kv/polarization/fault.h"
#include "toolkit/image_files/formats/formats.h"
#include "toolkit/image_files/formats/tiff_page.h"
#include "toolkit/image_files/formats/tiff_stack.h"
#include "toolkit/image_files/formats/tiff_stream.h"
#include "toolkit/image_files/formats/tiff_writer.h"
#include "toolkit/image_files/samples.h"
#include "toolkit/image_files/stored_samples.h"

namespace kv::polarization {
namespace {

/// Copies rows of stored samples into a frame.
void place_row(const std::uint8_t* from, std::span<std::uint16_t> to) { widen(from, to); }
void place_row(const std::uint16_t* from, std::span<std::uint16_t> to) {
  std::copy_n(from, to.size(), to.begin());
}

class TiffReader : public FrameReader {
 public:
  explicit TiffReader(SourcePointer source) : source_(std::move(source)), stream_(*source_) {
    if (stream_.get() == nullptr) fail_as_damaged();
    find_pages();
  }

  std::size_t count() const override { return pages_.size(); }

 private:
  /// libtiff would go from page to page anew for each one that is asked for. Small copies of other
  /// pages are no frames.
  void find_pages() {
    TIFF* tiff = stream_.get();
    do {
      std::uint32_t kind = 0;
      TIFFGetFieldDefaulted(tiff, TIFFTAG_SUBFILETYPE, &kind);
      if ((kind & FILETYPE_REDUCEDIMAGE) == 0) pages_.push_back(TIFFCurrentDirOffset(tiff));
    } while (TIFFReadDirectory(tiff) == 1);
    if (!stream_.message().empty()) fail_as_damaged();
    if (pages_.empty()) {
      throw Fault(FaultKind::unsupported,
                  "the TIFF holds reduced images alone; a page in full size is needed");
    }
  }

  void load(std::size_t index, Frame& frame) override {
    TIFF* tiff = stream_.get();
    stream_.clear_message();
    if (TIFFSetSubDirectory(tiff, pages_[index]) != 1) fail_as_damaged();
    const TiffPage page = examine_page(tiff, source_->size());
    if (!page.orientation.empty()) add_note(page.orientation);
    reshape(frame, {"TIFF", page.width, page.height, page.bit_depth},
            most_pixels(tiff, page, source_->size()));
    if (page.tiled) {
      page.bits == 8 ? read_tiles(page, frame, bytes_) : read_tiles(page, frame, words_);
    } else {
      read_strips(page, frame);
    }
  }

  void read_strips(const TiffPage& page, Frame& frame) {
    const std::size_t strip_samples = std::size_t{page.width} * page.part_height;
    const std::span samples(frame.samples);
    std::uint32_t strip = 0;
    for (std::size_t done = 0; done < samples.size(); done += strip_samples, ++strip) {
      const auto to = samples.subspan(done, std::min(strip_samples, samples.size() - done));
      if (page.bits == 16) {
        read_strip(strip, to.data(), 2 * to.size());
      } else {
        bytes_.resize(to.size());
        read_strip(strip, bytes_.data(), to.size());
        widen(bytes_.data(), to);
      }
    }
  }

  void read_strip(std::uint32_t strip, void* data, std::size_t size) {
    const auto bytes = static_cast<tmsize_t>(size);
    if (TIFFReadEncodedStrip(stream_.get(), strip, data, bytes) != bytes) fail_as_damaged();
  }

  template <class Stored>
  void read_tiles(const TiffPage& page, Frame& frame, Buffer<Stored>& room) {
    room.resize(std::size_t{page.part_width} * page.part_height);
    const auto bytes = static_cast<tmsize_t>(room.size() * sizeof(Stored));
    const std::span samples(frame.samples);
    std::uint32_t tile = 0;
    for (std::size_t top = 0; top < page.height; top += page.part_height) {
      for (std::size_t left = 0; left < page.width; left += page.part_width, ++tile) {
        if (TIFFReadEncodedTile(stream_.get(), tile, room.data(), bytes) != bytes) {
          fail_as_damaged();
        }
        const std::size_t columns = std::min<std::size_t>(page.part_width, page.width - left);
        const std::size_t bottom = std::min<std::size_t>(top + page.part_height, page.height);
        for (std::size_t row = top; row < bottom; ++row) {
          place_row(room.data() + (row - top) * page.part_width,
                    samples.subspan(row * page.width + left, columns));
        }
      }
    }
  }

  [[noreturn]] void fail_as_damaged() const {
    throw Fault(FaultKind::file, "the TIFF is damaged or truncated (" + stream_.message() +
                                     "); an intact one is needed");
  }

  SourcePointer source_;
  TiffStream stream_;
  std::vector<std::uint64_t> pages_;  ///< where their directories are
  Buffer<std::uint8_t> bytes_;
  Buffer<std::uint16_t> words_;
};

std::unique_ptr<FrameReader> open(SourcePointer source) {
  return std::make_unique<TiffReader>(std::move(source));
}

}  // namespace

FormatFunctions tiff_functions() {
  return {.open = open,
          .write_grey = write_tiff_image<GreyImage>,
          .write_floats = write_tiff_image<FloatImage>,
          .write_picture = write_tiff_image<Picture>,
          .open_stack = open_tiff_stack,
          .provenance = tiff_provenance};
}

}  // namespace kv::polarization
