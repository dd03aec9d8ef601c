// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include <utility>

#include "toolkit/image_files/formats/deflate_bound.h"
#include "toolkit/image_files/formats/formats.h"
#include "toolkit/image_files/formats/png_decoder.h"
#include "toolkit/image_files/formats/png_images.h"
#include "toolkit/image_files/formats/png_writer.h"
#include "toolkit/image_files/stored_samples.h"

namespace kv::polarization {
namespace {

class PngReader : public FrameReader {
 public:
  explicit PngReader(SourcePointer source) : source_(std::move(source)) {}
  std::size_t count() const override { return 1; }

 private:
  void load(std::size_t, Frame& frame) override {
    const PngHeader header = read_png_header(*source_);
    check_is_raw_frame(header);
    reshape(frame, {"PNG", header.width, header.height, header.bits},
            most_inflated(source_->size()) / header.pixel_size());
    const std::size_t sample_size = header.pixel_size();
    decoder_.decode(*source_, header, place_of_stored(frame, sample_size));
    spread_samples(frame, sample_size, std::endian::native);
  }

  SourcePointer source_;
  PngDecoder decoder_;
};

std::unique_ptr<FrameReader> open_png_frames(SourcePointer source) {
  return std::make_unique<PngReader>(read_whole(std::move(source)));
}

}  // namespace

FormatFunctions png_functions() {
  return {.open = open_png_frames,
          .open_images = open_png_images,
          .write_grey = write_png_grey,
          .write_picture = write_png_picture,
          .provenance = png_provenance};
}

}  // namespace kv::polarization
