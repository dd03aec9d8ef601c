// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <sstream>
#include <string>

#include "fuzzing/fuzzing.h"
#include "toolkit/image_files/format_table.h"
#include "toolkit/image_files/formats/formats.h"

namespace kv::fuzzing {

/// Images of a file that are read; files of a kilobyte can claim thousands.
constexpr std::size_t kMostImages = 8;

inline void mark(polarization::Frame& frame, std::uint8_t value) {
  std::ranges::fill(frame.samples, static_cast<std::uint16_t>(value * 257));
}
inline void mark(polarization::Image& image, std::uint8_t value) {
  std::ranges::fill(image.bytes, value);
}
inline bool equal(const polarization::Frame& a, const polarization::Frame& b) {
  return a.width == b.width && a.height == b.height && a.bit_depth == b.bit_depth &&
         a.samples == b.samples;
}
inline bool equal(const polarization::Image& a, const polarization::Image& b) {
  return a.width == b.width && a.height == b.height && a.channels == b.channels &&
         a.element == b.element && a.bytes == b.bytes;
}
inline bool is_full(const polarization::Frame& frame) {
  return frame.width > 0 && frame.height > 0 && frame.bit_depth >= 1 && frame.bit_depth <= 16 &&
         frame.samples.size() == polarization::pixel_count(frame.width, frame.height);
}
inline bool is_full(const polarization::Image& image) {
  return image.width > 0 && image.height > 0 && image.channels > 0 &&
         image.elements() == polarization::pixel_count(image.width, image.height) *
                                 static_cast<std::size_t>(image.channels);
}

/// Reads each image twice, into memory that held other values: an element that was left out shows
/// as a difference.
template <class Kept, class Reader>
void read_all(Reader& reader) {
  Kept first;
  Kept second;
  for (std::size_t i = 0; i < std::min(reader.count(), kMostImages); ++i) {
    mark(first, 0xA5);
    mark(second, 0x5A);
    if (!succeeds([&] { reader.read(i, first); })) continue;
    require(is_full(first), "what was read has a size, and elements for it");
    if (!succeeds([&] { reader.read(i, second); })) {
      require(allocations_can_fail(), "what was read once can be read again");
      continue;
    }
    require(equal(first, second), "what was read twice is equal");
  }
}

/// Reads a file of that format from memory, in even sizes, or from a stream.
inline void read_file(polarization::ImageFormat format, std::span<const std::uint8_t> bytes) {
  using namespace polarization;
  const FormatFunctions& functions = functions_of(format);
  const auto source = [&]() -> SourcePointer {
    if (bytes.size() % 2 == 0) return source_of(std::as_bytes(bytes));
    return source_of(std::make_shared<std::istringstream>(std::string(bytes.begin(), bytes.end())));
  };
  // As open_frames and open_images do, which refuse empty files.
  if (bytes.empty()) return;
  if (functions.open != nullptr) {
    std::unique_ptr<FrameReader> reader;
    if (succeeds([&] { reader = functions.open(source()); })) read_all<Frame>(*reader);
  }
  if (functions.open_images != nullptr) {
    std::unique_ptr<ImageReader> reader;
    if (succeeds([&] { reader = functions.open_images(source()); })) read_all<Image>(*reader);
  }
  if (functions.provenance != nullptr) {
    succeeds([&] { functions.provenance(*source()); });
  }
}

}  // namespace kv::fuzzing
