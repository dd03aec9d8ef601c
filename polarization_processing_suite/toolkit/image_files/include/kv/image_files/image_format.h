// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>
#include <string_view>

namespace kv::polarization {

/// Formats of image files; image_formats() tells what each can hold.
enum class ImageFormat : std::uint8_t { png, tiff, pgm, npy, raw };

/// What can be written: samples or 16-bit planes; planes of floats; pictures to look at.
enum class ImageKind : std::uint8_t { grey, floats, picture };

/// A line of the list of formats.
struct ImageFormatTraits {
  ImageFormat format;     ///< whose line it is
  std::string_view name;  ///< in small letters
  std::array<std::string_view, 3>
      endings;                       ///< with their dots, the usual one first; then empty ones
  std::string_view picture_ending;   ///< of a file that holds a picture
  std::string_view summary;          ///< what is read and written, for people
  bool has_header;                   ///< whether a file tells its own shape
  bool reads;                        ///< frames
  std::array<bool, 3> writes_kinds;  ///< by ImageKind
  bool stacks;                       ///< whether a file may be written that holds several images
  bool keeps_text;                   ///< title and provenance, see WriteOptions
  std::string_view missing;          ///< why this build cannot read or write it; empty when it can

  /// In this build.
  bool available() const { return missing.empty(); }
  bool writes(ImageKind kind) const { return writes_kinds[static_cast<std::size_t>(kind)]; }
};

/// The one list of formats, the preferred ones first, in the order of ImageFormat.
std::span<const ImageFormatTraits> image_formats();

/// The line of a format.
const ImageFormatTraits& traits_of(ImageFormat format);

/// The format of that name or ending, with or without a dot, in large or small letters.
std::optional<ImageFormat> format_named(std::string_view name);

/// The format that a file name's ending stands for. Throws Fault: of kind argument when there is
/// none, unsupported when this build lacks it.
ImageFormat format_for(const std::filesystem::path& path);

/// The first format of the list that has a header and that this build can write. There is one for
/// each kind in every build.
ImageFormat preferred_format(ImageKind kind);

/// The usual ending of a file of that kind, with the dot.
std::string_view ending_of(ImageFormat format, ImageKind kind = ImageKind::grey);

}  // namespace kv::polarization
