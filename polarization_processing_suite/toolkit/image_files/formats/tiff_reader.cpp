// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include <utility>

#include "toolkit/image_files/formats/formats.h"
#include "toolkit/image_files/formats/tiff_pages.h"
#include "toolkit/image_files/formats/tiff_stack.h"
#include "toolkit/image_files/formats/tiff_writer.h"
#include "toolkit/image_files/stored_samples.h"

namespace kv::polarization {
namespace {

class TiffReader : public FrameReader {
 public:
  explicit TiffReader(SourcePointer source) : pages_(std::move(source)) {}
  std::size_t count() const override { return pages_.count(); }

 private:
  void load(std::size_t index, Frame& frame) override {
    const TiffPage page = pages_.open(index);
    check_is_raw_frame(page);
    pages_.check(page);
    if (!page.orientation.empty()) add_note(page.orientation);
    reshape(frame, {"TIFF", page.width, page.height, page.bit_depth},
            most_pixels(page, pages_.file_size()));
    const std::size_t sample_size = page.pixel_bytes();
    pages_.read(page, place_of_stored(frame, sample_size));
    spread_samples(frame, sample_size, std::endian::native);
  }

  TiffPages pages_;
};

class TiffImages : public ImageReader {
 public:
  explicit TiffImages(SourcePointer source) : pages_(std::move(source)) {}
  std::size_t count() const override { return pages_.count(); }

 private:
  void load(std::size_t index, Image& image) override {
    const TiffPage page = pages_.open(index);
    const ElementType element = check_is_image(page);
    pages_.check(page);
    reshape(image, {"TIFF", page.width, page.height, page.bits}, page.channels, element,
            most_pixels(page, pages_.file_size()));
    pages_.read(page, image.bytes.data());
  }

  TiffPages pages_;
};

std::unique_ptr<FrameReader> open_tiff_frames(SourcePointer source) {
  return std::make_unique<TiffReader>(std::move(source));
}

std::unique_ptr<ImageReader> open_tiff_images(SourcePointer source) {
  return std::make_unique<TiffImages>(std::move(source));
}

}  // namespace

FormatFunctions tiff_functions() {
  return {.open = open_tiff_frames,
          .open_images = open_tiff_images,
          .write_grey = write_tiff_image<GreyImage>,
          .write_floats = write_tiff_image<FloatImage>,
          .write_picture = write_tiff_image<Picture>,
          .open_stack = open_tiff_stack,
          .provenance = tiff_provenance};
}

}  // namespace kv::polarization
