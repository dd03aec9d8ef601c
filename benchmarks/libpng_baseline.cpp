// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "libpng_baseline.h"

#include <png.h>
#include <zlib.h>

#include <cstdio>
#include <memory>

namespace libpng_baseline {
namespace {

struct Close {
  void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, Close>;

File open(const std::filesystem::path& path, const char* mode) {
  return File(std::fopen(path.string().c_str(), mode));
}

}  // namespace

bool is_available() { return true; }

void write(const std::filesystem::path& path, const kv::polarization::GreyImage& image) {
  const File file = open(path, "wb");
  png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
  png_infop info = png_create_info_struct(png);
  png_init_io(png, file.get());
  png_set_IHDR(png, info, static_cast<png_uint_32>(image.width),
               static_cast<png_uint_32>(image.height), 16, PNG_COLOR_TYPE_GRAY, PNG_INTERLACE_NONE,
               PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
  png_set_compression_level(png, 1);
  png_set_compression_strategy(png, Z_RLE);
  png_set_filter(png, PNG_FILTER_TYPE_DEFAULT, PNG_FILTER_SUB);
  png_write_info(png, info);
  png_set_swap(png);
  const std::uint16_t* row = image.samples.data();
  for (int i = 0; i < image.height; ++i, row += image.width) {
    png_write_row(png, reinterpret_cast<png_const_bytep>(row));
  }
  png_write_end(png, info);
  png_destroy_write_struct(&png, &info);
}

void read(const std::filesystem::path& path, kv::polarization::Frame& frame) {
  const File file = open(path, "rb");
  png_structp png = png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
  png_infop info = png_create_info_struct(png);
  png_init_io(png, file.get());
  png_read_info(png, info);
  png_set_swap(png);
  std::uint16_t* row = frame.samples.data();
  for (int i = 0; i < frame.height; ++i, row += frame.width) {
    png_read_row(png, reinterpret_cast<png_bytep>(row), nullptr);
  }
  png_read_end(png, nullptr);
  png_destroy_read_struct(&png, &info, nullptr);
}

}  // namespace libpng_baseline
