// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "kv/image_files/frame_reader.h"
#include "kv/image_files/image_reader.h"
#include "kv/image_files/image_writer.h"
#include "kv/image_files/stack_writer.h"
#include "toolkit/image_files/byte_source.h"

namespace kv::polarization {

/// What a format can do; null for what it cannot. A format that lacks its library has no function.
struct FormatFunctions {
  std::unique_ptr<FrameReader> (*open)(SourcePointer) = nullptr;
  std::unique_ptr<ImageReader> (*open_images)(SourcePointer) = nullptr;
  void (*write_grey)(PendingFile&, const GreyImage&, const WriteOptions&) = nullptr;
  void (*write_floats)(PendingFile&, const FloatImage&, const WriteOptions&) = nullptr;
  void (*write_picture)(PendingFile&, const Picture&, const WriteOptions&) = nullptr;
  std::unique_ptr<StackWriter> (*open_stack)(PendingFile&, std::size_t images,
                                             const WriteOptions&) = nullptr;
  std::optional<std::string> (*provenance)(ByteSource&) = nullptr;  ///< none where nothing tells
  std::string_view missing{};                                       ///< as in ImageFormatTraits
};

const FormatFunctions& functions_of(ImageFormat format);

/// The format that a file with these first bytes is of, 8 or fewer.
std::optional<ImageFormat> format_of_start(std::string_view bytes);

/// The same, for files of pictures too.
std::optional<ImageFormat> format_of_image_start(std::string_view bytes);

/// What the two take.
std::string first_bytes(ByteSource& source);

/// A text in a file that is longer is none that we wrote.
constexpr std::uint32_t kMostText = 1u << 20;

/// Frames without a header: of a file, and of what cannot seek.
std::unique_ptr<FrameReader> open_raw(SourcePointer source, const RawShape& shape);
std::unique_ptr<FrameReader> open_raw_pipe(StreamPointer stream, const RawShape& shape);

/// For the images of a stack that follow the first one.
inline WriteOptions without_texts(const WriteOptions& options) {
  return {.compression = options.compression};
}

/// Names of the formats that fulfil a condition, as a sentence lists them.
template <class Condition>
std::string list_of_names(Condition condition) {
  std::string names;
  for (const ImageFormatTraits& traits : image_formats()) {
    if (condition(traits)) names += (names.empty() ? "" : ", ") + std::string(traits.name);
  }
  return names;
}

}  // namespace kv::polarization
