// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "kv/image_files/image_format.h"

#include <algorithm>
#include <cctype>
#include <string>

#include "kv/polarization/fault.h"
#include "toolkit/image_files/format_table.h"

namespace kv::polarization {
namespace {

std::string in_small_letters(std::string_view text) {
  std::string small(text);
  for (char& letter : small) {
    letter = static_cast<char>(std::tolower(static_cast<unsigned char>(letter)));
  }
  return small;
}

std::string writable_endings() {
  std::string endings;
  for (const ImageFormatTraits& traits : image_formats()) {
    if (!traits.available()) continue;
    if (!endings.empty()) endings += ", ";
    endings += traits.endings[0];
  }
  return endings;
}

}  // namespace

const ImageFormatTraits& traits_of(ImageFormat format) {
  return image_formats()[static_cast<std::size_t>(format)];
}

std::optional<ImageFormat> format_named(std::string_view name) {
  const std::string small = in_small_letters(name);
  if (small.empty() || small == ".") return std::nullopt;
  for (const ImageFormatTraits& traits : image_formats()) {
    const auto matches = [&small](std::string_view ending) {
      return !ending.empty() && (small == ending || small == ending.substr(1));
    };
    if (small == traits.name || std::any_of(traits.endings.begin(), traits.endings.end(), matches))
      return traits.format;
  }
  return std::nullopt;
}

ImageFormat format_for(const std::filesystem::path& path) {
  const std::optional<ImageFormat> format = format_named(path.extension().string());
  if (!format) {
    throw Fault(FaultKind::argument, "the name " + path.filename().string() +
                                         " does not say which format to write; it must end in one "
                                         "of " +
                                         writable_endings());
  }
  if (!traits_of(*format).available()) {
    throw Fault(FaultKind::unsupported, std::string(traits_of(*format).missing) +
                                            "; files that it can write end in one of " +
                                            writable_endings());
  }
  return *format;
}

ImageFormat preferred_format(ImageKind kind) {
  for (const ImageFormatTraits& traits : image_formats()) {
    if (traits.has_header && traits.writes(kind)) return traits.format;
  }
  return ImageFormat::npy;
}

std::string_view ending_of(ImageFormat format, ImageKind kind) {
  const ImageFormatTraits& traits = traits_of(format);
  return kind == ImageKind::picture ? traits.picture_ending : traits.endings[0];
}

}  // namespace kv::polarization
