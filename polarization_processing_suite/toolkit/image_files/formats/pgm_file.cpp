// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

// Binary netpbm images, grey (P5) or in colour (P6), one or several in a row; frames are grey. The
// bit depth is that of the maxval.
#include <algorithm>
#include <string>
#include <utility>

#include "toolkit/image_files/concatenated_stack.h"
#include "toolkit/image_files/formats/formats.h"
#include "toolkit/image_files/formats/pgm_header.h"
#include "toolkit/image_files/stored_samples.h"

namespace kv::polarization {
namespace {

class PgmReader : public FrameReader {
 public:
  explicit PgmReader(SourcePointer source)
      : source_(std::move(source)), images_(read_pgm_headers(*source_, false)) {}

  std::size_t count() const override { return images_.size(); }

 private:
  void load(std::size_t index, Frame& frame) override {
    const PgmImage& image = images_[index];
    reshape(frame, {"PGM", image.width, image.height, image.bit_depth}, image.size());
    read_samples(*source_, image.first_byte, bytes_a_sample(image.bit_depth), std::endian::big,
                 frame);
  }

  SourcePointer source_;
  std::vector<PgmImage> images_;
};

class PgmImages : public ImageReader {
 public:
  explicit PgmImages(SourcePointer source)
      : source_(std::move(source)), images_(read_pgm_headers(*source_, true)) {}

  std::size_t count() const override { return images_.size(); }

 private:
  void load(std::size_t index, Image& image) override {
    const PgmImage& stored = images_[index];
    reshape(image, {"PGM", stored.width, stored.height, stored.bit_depth}, stored.channels,
            element_of(bytes_a_sample(stored.bit_depth)), stored.size());
    read_elements(*source_, stored.first_byte, std::endian::big, image);
  }

  SourcePointer source_;
  std::vector<PgmImage> images_;
};

std::unique_ptr<FrameReader> open_pgm_frames(SourcePointer source) {
  return std::make_unique<PgmReader>(std::move(source));
}

std::unique_ptr<ImageReader> open_pgm_images(SourcePointer source) {
  return std::make_unique<PgmImages>(std::move(source));
}

/// A line, which ends no earlier than the text; empty for an empty one.
std::string comment(std::string_view start, std::string text) {
  if (text.empty()) return text;
  std::replace_if(
      text.begin(), text.end(), [](char c) { return c == '\n' || c == '\r'; }, ' ');
  return std::string(start) + text + '\n';
}

void write_header(PendingFile& file, const char* kind, int width, int height, int maxval,
                  const WriteOptions& options) {
  const std::string header = std::string(kind) + "\n" +
                             comment(kPgmProvenance, options.provenance) +
                             comment("# ", options.title) + std::to_string(width) + " " +
                             std::to_string(height) + "\n" + std::to_string(maxval) + "\n";
  file.write(header.data(), header.size());
}

void write_pgm_grey(PendingFile& file, const GreyImage& image, const WriteOptions& options) {
  write_header(file, "P5", image.width, image.height, full_scale(image.bit_depth), options);
  write_samples(file, image.samples, bytes_a_sample(image.bit_depth), std::endian::big);
}

void write_pgm_picture(PendingFile& file, const Picture& picture, const WriteOptions& options) {
  write_header(file, picture.channels == 1 ? "P5" : "P6", picture.width, picture.height, 255,
               options);
  file.write(picture.bytes.data(), picture.bytes.size());
}

}  // namespace

FormatFunctions pgm_functions() {
  return {.open = open_pgm_frames,
          .open_images = open_pgm_images,
          .write_grey = write_pgm_grey,
          .write_picture = write_pgm_picture,
          .open_stack = open_concatenated<ImageFormat::pgm>,
          .provenance = pgm_provenance};
}

}  // namespace kv::polarization
