#include <string>
#include <utility>

#include "kv/polarization/fault.h"
#include "toolkit/image_files/formats/deflate_bound.h"
#include "toolkit/image_files/formats/formats.h"
#include "toolkit/image_files/formats/png_state.h"
#include "toolkit/image_files/formats/png_writer.h"
#include "toolkit/image_files/samples.h"
#include "toolkit/image_files/stored_samples.h"

namespace kv::polarization {
namespace {

std::string colour_name(int colour_type) {
  switch (colour_type) {
    case PNG_COLOR_TYPE_PALETTE:
      return "palette colour";
    case PNG_COLOR_TYPE_GRAY_ALPHA:
      return "grey with alpha";
    case PNG_COLOR_TYPE_GRAY:
      return "grey";
    default:
      return "RGB colour";
  }
}

/// libpng's state for reading one image.
class Decoder {
 public:
  explicit Decoder(ByteSource& source)
      : source_(source),
        png_(png_create_read_struct(PNG_LIBPNG_VER_STRING, &message_, keep_png_message,
                                    ignore_png_warning)),
        info_(png_create_info_struct(png_)) {
    require_png_state(png_, info_);
    png_set_read_fn(png_, this, read_bytes);
    lift_png_limits(png_);
  }
  ~Decoder() { png_destroy_read_struct(&png_, &info_, nullptr); }
  Decoder(const Decoder&) = delete;
  Decoder& operator=(const Decoder&) = delete;

  void decode(Frame& frame, Buffer<std::uint8_t>& room) {
    require(png_succeeds(png_, [this] { png_read_info(png_, info_); }));
    const int bits = png_get_bit_depth(png_, info_);
    const int colour_type = png_get_color_type(png_, info_);
    if (colour_type != PNG_COLOR_TYPE_GRAY || bits < 8) {
      throw Fault(FaultKind::unsupported, "the PNG is " + colour_name(colour_type) + " of " +
                                              std::to_string(bits) +
                                              " bits; a raw frame is grey with 8 or 16 bits");
    }
    const std::size_t sample_size = bytes_a_sample(bits);
    reshape(frame,
            {"PNG", png_get_image_width(png_, info_), png_get_image_height(png_, info_), bits},
            most_inflated(source_.size()) / sample_size);
    if (sample_size == 2) {
      decode_rows(reinterpret_cast<png_bytep>(frame.samples.data()), frame, 2);
    } else {
      room.resize(frame.samples.size());
      decode_rows(room.data(), frame, 1);
      widen(room.data(), frame.samples);
    }
  }

 private:
  static void read_bytes(png_structp png, png_bytep data, std::size_t size) {
    auto* self = static_cast<Decoder*>(png_get_io_ptr(png));
    const std::size_t count = self->source_.read(self->position_, data, size);
    self->position_ += count;
    if (count != size) png_error(png, "the file ends too early");
  }

  void decode_rows(png_bytep first_row, const Frame& frame, std::size_t sample_size) {
    const std::size_t row_size = static_cast<std::size_t>(frame.width) * sample_size;
    const int height = frame.height;
    require(png_succeeds(png_, [=, this] {
      if (sample_size == 2) png_set_swap(png_);
      const int passes = png_set_interlace_handling(png_);
      for (int pass = 0; pass < passes; ++pass) {
        for (int row = 0; row < height; ++row) {
          png_read_row(png_, first_row + static_cast<std::size_t>(row) * row_size, nullptr);
        }
      }
      png_read_end(png_, nullptr);
    }));
  }

  void require(bool success) const {
    if (!success) {
      throw Fault(FaultKind::file,
                  "the PNG is damaged or truncated (" + message_ + "); an intact one is needed");
    }
  }

  ByteSource& source_;
  std::uint64_t position_ = 0;
  std::string message_;
  png_structp png_;
  png_infop info_;
};

class PngReader : public FrameReader {
 public:
  explicit PngReader(SourcePointer source) : source_(std::move(source)) {}
  std::size_t count() const override { return 1; }

 private:
  void load(std::size_t, Frame& frame) override { Decoder(*source_).decode(frame, room_); }

  SourcePointer source_;
  Buffer<std::uint8_t> room_;
};

std::unique_ptr<FrameReader> open(SourcePointer source) {
  return std::make_unique<PngReader>(std::move(source));
}

}  // namespace

FormatFunctions png_functions() {
  return {.open = open, .write_grey = write_png_grey, .write_picture = write_png_picture};
}

}  // namespace kv::polarization
