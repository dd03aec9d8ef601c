#include "toolkit/image_files/formats/png_writer.h"

#include <zlib.h>

#include <string>
#include <utility>

#include "toolkit/image_files/formats/png_state.h"
#include "toolkit/image_files/samples.h"
#include "toolkit/image_files/stored_samples.h"

namespace kv::polarization {
namespace {

void write_bytes(png_structp png, png_bytep data, std::size_t size) {
  auto* stream = static_cast<std::FILE*>(png_get_io_ptr(png));
  if (std::fwrite(data, 1, size, stream) != size) png_error(png, "write failed");
}

void flush_later(png_structp) {}

struct Layout {
  int width;
  int height;
  int bits;
  int colour_type;
  std::size_t row_size;
};

/// The one kind of text that is UTF-8. libpng asks for texts that could be changed.
struct Title {
  explicit Title(std::string title) : text(std::move(title)) {
    entry.compression = PNG_ITXT_COMPRESSION_NONE;
    entry.key = key.data();
    entry.text = text.data();
    entry.itxt_length = text.size();
    entry.lang = none.data();
    entry.lang_key = none.data();
  }

  std::string key = "Title";
  std::string text;
  std::string none;
  png_text entry{};
};

/// Rows of 16 bits are in the machine's own order.
void encode(PendingFile& file, const Layout& layout, const void* pixels,
            const WriteOptions& options) {
  const auto* bytes = static_cast<const std::uint8_t*>(pixels);
  std::string message;
  png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, &message, keep_png_message,
                                            ignore_png_warning);
  png_infop info = png_create_info_struct(png);
  require_png_state(png, info);
  const Title title(options.title);
  const png_text* entry = title.text.empty() ? nullptr : &title.entry;
  std::FILE* stream = file.stream();
  const bool success = png_succeeds(png, [=] {
    png_set_write_fn(png, stream, write_bytes, flush_later);
    lift_png_limits(png);
    png_set_IHDR(png, info, static_cast<png_uint_32>(layout.width),
                 static_cast<png_uint_32>(layout.height), layout.bits, layout.colour_type,
                 PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    if (entry != nullptr) png_set_text(png, info, entry, 1);
    // The differences of noisy neighbours repeat only in flat areas. A search for other repeats
    // takes half as long again and makes the files no smaller.
    png_set_compression_level(png, 1);
    png_set_compression_strategy(png, Z_RLE);
    png_set_filter(png, PNG_FILTER_TYPE_DEFAULT, PNG_FILTER_SUB);
    png_write_info(png, info);
    if (layout.bits == 16) png_set_swap(png);
    for (int row = 0; row < layout.height; ++row) {
      png_write_row(png, bytes + static_cast<std::size_t>(row) * layout.row_size);
    }
    png_write_end(png, info);
  });
  png_destroy_write_struct(&png, &info);
  if (!success) file.fail();
}

}  // namespace

void write_png_grey(PendingFile& file, const GreyImage& image, const WriteOptions& options) {
  const std::size_t sample_size = bytes_a_sample(image.bit_depth);
  const Layout layout{image.width, image.height, static_cast<int>(8 * sample_size),
                      PNG_COLOR_TYPE_GRAY, static_cast<std::size_t>(image.width) * sample_size};
  if (sample_size == 2) return encode(file, layout, image.samples.data(), options);
  Buffer<std::uint8_t> bytes(image.samples.size());
  narrow(image.samples, bytes.data());
  encode(file, layout, bytes.data(), options);
}

void write_png_picture(PendingFile& file, const Picture& picture, const WriteOptions& options) {
  const int colour_type = picture.channels == 1 ? PNG_COLOR_TYPE_GRAY : PNG_COLOR_TYPE_RGB;
  encode(file, {picture.width, picture.height, 8, colour_type, picture.row_size()},
         picture.bytes.data(), options);
}

}  // namespace kv::polarization
