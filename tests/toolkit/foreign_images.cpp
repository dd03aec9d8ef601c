#include "foreign_images.h"

#include <png.h>
#include <tiffio.h>

#include <cstdio>
#include <numeric>
#include <stdexcept>

namespace {

constexpr int width = 8;
constexpr int height = 6;

void write_tiff_page(TIFF* tiff, const TiffKind& kind, std::size_t page) {
  TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, width);
  TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, height);
  TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, kind.channels);
  TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, kind.bits);
  TIFFSetField(tiff, TIFFTAG_SAMPLEFORMAT, kind.sample_format);
  TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, kind.photometric);
  TIFFSetField(tiff, TIFFTAG_COMPRESSION, kind.compression);
  TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
  if (kind.photometric == PHOTOMETRIC_PALETTE) {
    std::vector<std::uint16_t> map(std::size_t{1} << kind.bits);
    TIFFSetField(tiff, TIFFTAG_COLORMAP, map.data(), map.data(), map.data());
  }
  // Large enough for the rows of any kind, and for a tile of 16 x 16.
  std::vector<std::uint16_t> samples(16 * 16 * 8);
  std::iota(samples.begin(), samples.end(), static_cast<std::uint16_t>(256 * page));
  if (kind.tiled) {
    TIFFSetField(tiff, TIFFTAG_TILEWIDTH, 16);
    TIFFSetField(tiff, TIFFTAG_TILELENGTH, 16);
    for (std::size_t row = 16; row-- > 0;) {
      for (std::size_t column = 0; column < width; ++column) {
        samples[row * 16 + column] = static_cast<std::uint16_t>(256 * page + row * width + column);
      }
    }
    TIFFWriteTile(tiff, samples.data(), 0, 0, 0, 0);
  } else {
    TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, 4);
    for (std::uint32_t row = 0; row < height; ++row) {
      std::vector<std::uint16_t> line(samples.begin() + row * width, samples.end());
      TIFFWriteScanline(tiff, line.data(), row, 0);
    }
  }
  TIFFWriteDirectory(tiff);
}

}  // namespace

void write_png_of_kind(const std::filesystem::path& path, int color_type, int bits,
                       bool interlaced) {
  std::FILE* stream = std::fopen(path.string().c_str(), "wb");
  png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
  png_infop info = png_create_info_struct(png);
  png_init_io(png, stream);
  png_set_IHDR(png, info, width, height, bits, color_type,
               interlaced ? PNG_INTERLACE_ADAM7 : PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT,
               PNG_FILTER_TYPE_DEFAULT);
  const png_color colors[2] = {{0, 0, 0}, {255, 255, 255}};
  if (color_type == PNG_COLOR_TYPE_PALETTE) png_set_PLTE(png, info, colors, 2);
  png_write_info(png, info);
  std::vector<std::vector<png_byte>> rows(height, std::vector<png_byte>(width * 8));
  std::vector<png_bytep> pointers;
  for (std::size_t row = 0; row < rows.size(); ++row) {
    if (color_type == PNG_COLOR_TYPE_GRAY) {
      std::iota(rows[row].begin(), rows[row].end(), static_cast<png_byte>(row * width));
    }
    pointers.push_back(rows[row].data());
  }
  png_write_image(png, pointers.data());
  png_write_end(png, info);
  png_destroy_write_struct(&png, &info);
  std::fclose(stream);
}

void write_tiff_pages(const std::filesystem::path& path, const std::vector<TiffKind>& pages) {
  TIFF* tiff = TIFFOpen(path.string().c_str(), pages.front().big_endian ? "wb" : "wl");
  if (tiff == nullptr) throw std::runtime_error("cannot write " + path.string());
  for (std::size_t page = 0; page < pages.size(); ++page) write_tiff_page(tiff, pages[page], page);
  TIFFClose(tiff);
}
