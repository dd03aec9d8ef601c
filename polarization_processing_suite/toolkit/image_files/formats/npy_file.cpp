// NumPy arrays: rows x columns, or frames x rows x columns; written with channels last.
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

/// A single channel makes a plane without an axis of channels.
void write_header(PendingFile& file, const char* type, int width, int height, int channels) {
  std::vector<int> shape = {height, width};
  if (channels > 1) shape.push_back(channels);
  const std::string header = npy_header(type, shape);
  file.write(header.data(), header.size());
}

void write_grey(PendingFile& file, const GreyImage& image, const WriteOptions&) {
  const std::size_t sample_size = bytes_a_sample(image.bit_depth);
  write_header(file, sample_size == 1 ? "|u1" : "<u2", image.width, image.height, 1);
  write_samples(file, image.samples, sample_size, std::endian::little);
}

void write_floats(PendingFile& file, const FloatImage& image, const WriteOptions&) {
  write_header(file, "<f4", image.width, image.height, image.channels);
  file.write(image.values.data(), image.values.size_bytes());
}

void write_picture(PendingFile& file, const Picture& picture, const WriteOptions&) {
  write_header(file, "|u1", picture.width, picture.height, picture.channels);
  file.write(picture.bytes.data(), picture.bytes.size());
}

}  // namespace

FormatFunctions npy_functions() {
  return {.open = open,
          .write_grey = write_grey,
          .write_floats = write_floats,
          .write_picture = write_picture};
}

}  // namespace kv::polarization
