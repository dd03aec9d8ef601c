#include "toolkit/image_files/png_file.h"

#include <png.h>
#include <zlib.h>

#include <csetjmp>
#include <string>
#include <utility>
#include <vector>

#include "kv/polarization/fault.h"
#include "toolkit/image_files/sample_bytes.h"

namespace kv::polarization {
namespace {

void keep_message_and_leave(png_structp png, png_const_charp message) {
  *static_cast<std::string*>(png_get_error_ptr(png)) = message;
  png_longjmp(png, 1);
}

void ignore_warning(png_structp, png_const_charp) {}

/// Runs calls of libpng, which leaves them by longjmp when it fails. That skips destructors, so a
/// step must have no local variable with one.
template <class Step>
bool succeeds(png_structp png, Step step) {
  if (setjmp(png_jmpbuf(png)) != 0) return false;
  step();
  return true;
}

std::string color_name(int color_type) {
  switch (color_type) {
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
  explicit Decoder(InputFile& file)
      : png_(png_create_read_struct(PNG_LIBPNG_VER_STRING, &message_, keep_message_and_leave,
                                    ignore_warning)),
        info_(png_create_info_struct(png_)) {
    png_set_read_fn(png_, &file, read_bytes);
  }
  ~Decoder() { png_destroy_read_struct(&png_, &info_, nullptr); }
  Decoder(const Decoder&) = delete;
  Decoder& operator=(const Decoder&) = delete;

  Frame decode() {
    require(succeeds(png_, [this] { png_read_info(png_, info_); }));
    const int bits = png_get_bit_depth(png_, info_);
    const int color_type = png_get_color_type(png_, info_);
    if (color_type != PNG_COLOR_TYPE_GRAY || bits < 8) {
      throw Fault(FaultKind::file, "the PNG is " + color_name(color_type) + " of " +
                                       std::to_string(bits) +
                                       " bits; a raw frame is grey with 8 or 16 bits");
    }
    Frame frame =
        make_frame(png_get_image_width(png_, info_), png_get_image_height(png_, info_), bits);
    decode_samples(frame);
    return frame;
  }

 private:
  static void read_bytes(png_structp png, png_bytep data, std::size_t size) {
    auto* file = static_cast<InputFile*>(png_get_io_ptr(png));
    if (file->read(data, size) != size) png_error(png, "the file ends too early");
  }

  void decode_samples(Frame& frame) {
    const auto width = static_cast<std::size_t>(frame.width);
    const auto height = static_cast<std::size_t>(frame.height);
    const std::size_t row_size = width * static_cast<std::size_t>(frame.bit_depth / 8);
    std::vector<std::uint8_t> bytes(row_size * height);
    std::vector<png_bytep> rows(height);
    for (std::size_t row = 0; row < height; ++row) rows[row] = bytes.data() + row * row_size;
    require(succeeds(png_, [this, &rows] {
      png_read_image(png_, rows.data());
      png_read_end(png_, nullptr);
    }));
    samples_from_bytes(bytes, frame.bit_depth, ByteOrder::big, frame.samples);
  }

  void require(bool success) const {
    if (!success) {
      throw Fault(FaultKind::file,
                  "the PNG is damaged or truncated (" + message_ + "); an intact one is needed");
    }
  }

  std::string message_;
  png_structp png_;
  png_infop info_;
};

class PngReader : public FrameReader {
 public:
  explicit PngReader(InputFile file) : file_(std::move(file)) {}
  std::size_t count() const override { return 1; }
  Frame read(std::size_t) override {
    file_.seek(0);
    return Decoder(file_).decode();
  }

 private:
  InputFile file_;
};

void write_bytes(png_structp png, png_bytep data, std::size_t size) {
  auto* stream = static_cast<std::FILE*>(png_get_io_ptr(png));
  if (std::fwrite(data, 1, size, stream) != size) png_error(png, "write failed");
}

void flush_later(png_structp) {}

struct Layout {
  int width;
  int height;
  int bits;
  int color_type;
};

void encode(PendingFile& file, const Layout& layout, const std::uint8_t* bytes,
            std::size_t row_size) {
  std::string message;
  png_structp png =
      png_create_write_struct(PNG_LIBPNG_VER_STRING, &message, keep_message_and_leave, nullptr);
  png_infop info = png_create_info_struct(png);
  std::FILE* stream = file.stream();
  const bool success = succeeds(png, [=] {
    png_set_write_fn(png, stream, write_bytes, flush_later);
    png_set_IHDR(png, info, static_cast<png_uint_32>(layout.width),
                 static_cast<png_uint_32>(layout.height), layout.bits, layout.color_type,
                 PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    // The differences of noisy neighbours repeat only in flat areas. A search for other repeats
    // takes half as long again and makes the files no smaller.
    png_set_compression_level(png, 1);
    png_set_compression_strategy(png, Z_RLE);
    png_set_filter(png, PNG_FILTER_TYPE_DEFAULT, PNG_FILTER_SUB);
    png_write_info(png, info);
    for (int row = 0; row < layout.height; ++row) {
      png_write_row(png, bytes + static_cast<std::size_t>(row) * row_size);
    }
    png_write_end(png, info);
  });
  png_destroy_write_struct(&png, &info);
  if (!success) file.fail();
}

}  // namespace

bool png_available() { return true; }

std::unique_ptr<FrameReader> open_png(InputFile file) {
  return std::make_unique<PngReader>(std::move(file));
}

void write_png(PendingFile& file, const GreyImage& image) {
  const auto bytes = bytes_from_samples(image.samples, image.bit_depth, ByteOrder::big);
  const int bits = image.bit_depth > 8 ? 16 : 8;
  encode(file, {image.width, image.height, bits, PNG_COLOR_TYPE_GRAY}, bytes.data(),
         static_cast<std::size_t>(image.width) * static_cast<std::size_t>(bits / 8));
}

void write_png(PendingFile& file, const Picture& picture) {
  const int color_type = picture.channels == 1 ? PNG_COLOR_TYPE_GRAY : PNG_COLOR_TYPE_RGB;
  encode(file, {picture.width, picture.height, 8, color_type}, picture.bytes.data(),
         picture.row_size());
}

}  // namespace kv::polarization
