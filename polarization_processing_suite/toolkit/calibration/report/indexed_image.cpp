// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "toolkit/calibration/report/indexed_image.h"

#include <algorithm>
#include <cstddef>
#include <span>
#include <string_view>

namespace kv::polarization {
namespace {

constexpr std::uint32_t kHeaderSize = 14;
constexpr std::uint32_t kInfoSize = 40;
constexpr std::uint32_t kPaletteSize = 256 * 4;
constexpr std::uint32_t kPixelsBegin = kHeaderSize + kInfoSize + kPaletteSize;

using Bytes = std::vector<std::uint8_t>;

void append(Bytes& bytes, std::uint32_t number, int size) {
  for (int i = 0; i < size; ++i) bytes.push_back(static_cast<std::uint8_t>(number >> 8 * i));
}

Bytes bitmap_of(const IndexedImage& image) {
  const auto width = static_cast<std::uint32_t>(image.width);
  const auto height = static_cast<std::uint32_t>(image.height);
  const std::uint32_t stride = (width + 3) / 4 * 4;
  Bytes bytes{'B', 'M'};
  append(bytes, kPixelsBegin + stride * height, 4);
  append(bytes, 0, 4);
  append(bytes, kPixelsBegin, 4);
  append(bytes, kInfoSize, 4);
  append(bytes, width, 4);
  append(bytes, height, 4);
  append(bytes, 1, 2);  // planes
  append(bytes, 8, 2);  // bits a pixel
  append(bytes, 0, 4);  // not compressed
  append(bytes, stride * height, 4);
  for (int i = 0; i < 4; ++i) append(bytes, 0, 4);  // no resolution; all colours
  for (const Colour& colour : image.palette) {
    bytes.insert(bytes.end(), {colour[2], colour[1], colour[0], 0});
  }
  for (std::uint32_t row = height; row-- > 0;) {
    const std::uint8_t* start = image.pixels.data() + std::size_t{row} * width;
    bytes.insert(bytes.end(), start, start + width);
    bytes.resize(bytes.size() + stride - width);
  }
  return bytes;
}

/// RFC 4648, with padding.
std::string base64(std::span<const std::uint8_t> bytes) {
  constexpr std::string_view digits =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string text;
  text.reserve((bytes.size() + 2) / 3 * 4);
  for (std::size_t i = 0; i < bytes.size(); i += 3) {
    const std::size_t taken = std::min<std::size_t>(3, bytes.size() - i);
    std::uint32_t group = 0;
    for (std::size_t j = 0; j < 3; ++j) group = group << 8 | (j < taken ? bytes[i + j] : 0u);
    for (std::size_t j = 0; j < 4; ++j) {
      text += j <= taken ? digits[group >> (18 - 6 * j) & 63u] : '=';
    }
  }
  return text;
}

}  // namespace

std::string data_address(const IndexedImage& image) {
  return "data:image/bmp;base64," + base64(bitmap_of(image));
}

}  // namespace kv::polarization
