// NumPy arrays: rows x columns, or images x rows x columns; written with channels last.
#include <limits>
#include <string>
#include <utility>

#include "kv/polarization/fault.h"
#include "toolkit/image_files/formats/formats.h"
#include "toolkit/image_files/formats/npy_header.h"
#include "toolkit/image_files/stored_samples.h"

namespace kv::polarization {
namespace {

[[noreturn]] void refuse(const std::string& what) {
  throw Fault(FaultKind::unsupported,
              "the NPY array " + what +
                  "; frames are arrays of uint8 or uint16, rows x columns or frames x rows x "
                  "columns, in C order");
}

/// A product that stays at the greatest number instead of wrapping around.
std::uint64_t product(std::uint64_t a, std::uint64_t b) {
  constexpr std::uint64_t most = std::numeric_limits<std::uint64_t>::max();
  return b != 0 && a > most / b ? most : a * b;
}

class NpyReader : public FrameReader {
 public:
  explicit NpyReader(SourcePointer source) : source_(std::move(source)) {
    const NpyHeader header = read_npy_header(*source_);
    if (header.type == "|u1" || header.type == "<u1" || header.type == ">u1") {
      sample_size_ = 1;
    } else if (header.type == "<u2" || header.type == ">u2") {
      sample_size_ = 2;
      order_ = header.type[0] == '>' ? std::endian::big : std::endian::little;
    } else {
      refuse("has elements of type " + header.type);
    }
    if (header.columns_first) refuse("is in Fortran order, column by column");
    const std::size_t sides = header.shape.size();
    if (sides != 2 && sides != 3) refuse("has " + std::to_string(sides) + " dimensions");
    count_ = sides == 3 ? header.shape[0] : 1;
    height_ = header.shape[sides - 2];
    width_ = header.shape[sides - 1];
    first_byte_ = header.first_byte;
    check_bytes();
  }

  std::size_t count() const override { return static_cast<std::size_t>(count_); }

 private:
  void check_bytes() const {
    const std::uint64_t needed = product(count_, frame_bytes());
    const std::uint64_t available = source_->size() - first_byte_;
    if (needed == 0) {
      throw Fault(FaultKind::file, "the NPY array is empty; no side of it may be 0");
    }
    if (needed > available) {
      throw Fault(FaultKind::file, "the NPY file is truncated: its array takes " +
                                       std::to_string(needed) + " bytes, but only " +
                                       std::to_string(available) + " follow the header");
    }
  }

  std::uint64_t frame_bytes() const { return product(product(width_, height_), sample_size_); }

  void load(std::size_t index, Frame& frame) override {
    reshape(frame, {"NPY", width_, height_, static_cast<int>(8 * sample_size_)},
            frame_bytes() / sample_size_);
    read_samples(*source_, first_byte_ + index * frame_bytes(), sample_size_, order_, frame, room_);
  }

  SourcePointer source_;
  std::uint64_t count_ = 0;
  std::uint64_t height_ = 0;
  std::uint64_t width_ = 0;
  std::uint64_t first_byte_ = 0;
  std::size_t sample_size_ = 1;
  std::endian order_ = std::endian::little;
  Buffer<std::uint8_t> room_;
};

std::unique_ptr<FrameReader> open(SourcePointer source) {
  return std::make_unique<NpyReader>(std::move(source));
}

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

void write_picture(PendingFile& file, const Picture& picture, const WriteOptions&) {
  write_header(file, "|u1", sides_of(picture.width, picture.height, picture.channels));
  file.write(picture.bytes.data(), picture.bytes.size());
}

}  // namespace

FormatFunctions npy_functions() {
  return {.open = open,
          .write_grey = write_array<GreyImage>,
          .write_floats = write_array<FloatImage>,
          .write_picture = write_picture,
          .open_stack = open_npy_stack};
}

}  // namespace kv::polarization
