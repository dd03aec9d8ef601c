// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

// NumPy arrays: rows x columns, or images x rows x columns; written with channels last.
#include <string>

#include "toolkit/image_files/formats/formats.h"
#include "toolkit/image_files/formats/npy_header.h"
#include "toolkit/image_files/formats/npy_reader.h"
#include "toolkit/image_files/stored_samples.h"

namespace kv::polarization {
namespace {

const char* type_of(const GreyImage& image) { return image.bit_depth > 8 ? "<u2" : "|u1"; }
const char* type_of(const FloatImage&) { return "<f4"; }

std::vector<std::size_t> sides_of(int width, int height, int channels) {
  std::vector<std::size_t> sides = {static_cast<std::size_t>(height),
                                    static_cast<std::size_t>(width)};
  // A single channel makes a plane without an axis of channels.
  if (channels > 1) sides.push_back(static_cast<std::size_t>(channels));
  return sides;
}
std::vector<std::size_t> sides_of(const GreyImage& image) {
  return sides_of(image.width, image.height, 1);
}
std::vector<std::size_t> sides_of(const FloatImage& image) {
  return sides_of(image.width, image.height, image.channels);
}

void write_elements(PendingFile& file, const GreyImage& image) {
  write_samples(file, image.samples, bytes_a_sample(image.bit_depth), std::endian::little);
}
void write_elements(PendingFile& file, const FloatImage& image) {
  file.write(image.values.data(), image.values.size_bytes());
}

void write_header(PendingFile& file, const char* type, const std::vector<std::size_t>& sides) {
  const std::string header = npy_header(type, sides);
  file.write(header.data(), header.size());
}

template <class Image>
void write_array(PendingFile& file, const Image& image, const WriteOptions&) {
  write_header(file, type_of(image), sides_of(image));
  write_elements(file, image);
}

class NpyStack : public StackWriter {
 public:
  NpyStack(PendingFile& file, std::size_t images)
      : StackWriter(ImageFormat::npy, images), file_(file) {}

 private:
  void write(const GreyImage& image) override { write_next(image); }
  void write(const FloatImage& image) override { write_next(image); }

  template <class Image>
  void write_next(const Image& image) {
    if (at_first()) {
      std::vector<std::size_t> sides = sides_of(image);
      sides.insert(sides.begin(), images());
      write_header(file_, type_of(image), sides);
    }
    write_elements(file_, image);
  }

  PendingFile& file_;
};

std::unique_ptr<StackWriter> open_npy_stack(PendingFile& file, std::size_t images,
                                            const WriteOptions&) {
  return std::make_unique<NpyStack>(file, images);
}

void write_array_of_picture(PendingFile& file, const Picture& picture, const WriteOptions&) {
  write_header(file, "|u1", sides_of(picture.width, picture.height, picture.channels));
  file.write(picture.bytes.data(), picture.bytes.size());
}

}  // namespace

FormatFunctions npy_functions() {
  return {.open = open_npy_frames,
          .open_images = open_npy_images,
          .write_grey = write_array<GreyImage>,
          .write_floats = write_array<FloatImage>,
          .write_picture = write_array_of_picture,
          .open_stack = open_npy_stack};
}

}  // namespace kv::polarization
