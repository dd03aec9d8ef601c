#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "kv/polarization/picture.h"
#include "toolkit/image_files/pending_file.h"

namespace kv::polarization {

enum class ImageFormat { png, tiff, pgm, raw };

/// Formats with a header that this build can write planes in, the preferred one first.
std::vector<std::string> plane_format_names();

std::optional<ImageFormat> format_named(std::string_view name);

/// The format that a file name's extension stands for. Throws Fault when there is none, or when
/// this build cannot write it.
ImageFormat format_for(const std::filesystem::path& path);

/// With the dot.
std::string extension_of(ImageFormat format);

/// One grey channel, stored in bytes up to 8 bits and in two bytes above.
struct GreyImage {
  int width;
  int height;
  int bit_depth;
  std::span<const std::uint16_t> samples;
};

void write_grey(PendingFile& file, ImageFormat format, const GreyImage& image);

/// Two float channels, interleaved: as TIFF, or as headerless 32-bit floats in a build without
/// TIFF.
void write_float_pairs(PendingFile& file, int width, int height, std::span<const float> pairs);
std::string float_pairs_extension();

/// As PNG, or as netpbm in a build without PNG.
void write_picture(PendingFile& file, const Picture& picture);
std::string picture_extension();

}  // namespace kv::polarization
