// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "toolkit/image_files/formats/png_images.h"

#include <utility>

#include "kv/polarization/fault.h"
#include "toolkit/image_files/formats/deflate_bound.h"
#include "toolkit/image_files/formats/png_decoder.h"
#include "toolkit/image_files/formats/png_header.h"
#include "toolkit/image_files/stored_samples.h"

namespace kv::polarization {
namespace {

class PngImages : public ImageReader {
 public:
  explicit PngImages(SourcePointer source) : source_(std::move(source)) {}
  std::size_t count() const override { return 1; }

 private:
  void load(std::size_t, Image& image) override {
    const PngHeader header = read_png_header(*source_);
    const bool is_grey = header.colour == PngColour::grey && header.bits >= 8;
    if (!is_grey && (header.colour != PngColour::rgb || header.bits != 8)) {
      throw Fault(FaultKind::unsupported,
                  "the PNG is neither grey of 8 or 16 bits nor RGB of 8; an image is one of these");
    }
    reshape(image, {"PNG", header.width, header.height, header.bits}, is_grey ? 1 : 3,
            element_of(bytes_a_sample(header.bits)),
            most_inflated(source_->size()) / header.pixel_size());
    decoder_.decode(*source_, header, image.bytes.data());
  }

  SourcePointer source_;
  PngDecoder decoder_;
};

}  // namespace

std::unique_ptr<ImageReader> open_png_images(SourcePointer source) {
  return std::make_unique<PngImages>(read_whole(std::move(source)));
}

}  // namespace kv::polarization
