// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "kv/image_files/image_reader.h"

#include <string>

#include "kv/polarization/fault.h"
#include "toolkit/image_files/format_table.h"

namespace kv::polarization {

void ImageReader::read(std::size_t index, Image& image) {
  if (index >= count()) {
    throw Fault(FaultKind::argument, "there is no image " + std::to_string(index) +
                                         "; the file has " + std::to_string(count()) +
                                         ", numbered from 0 up");
  }
  load(index, image);
}

Image ImageReader::read(std::size_t index) {
  Image image;
  read(index, image);
  return image;
}

std::unique_ptr<ImageReader> open_images(const std::filesystem::path& path) {
  SourcePointer source = source_of(open_stream(path));
  const auto format = format_of_image_start(first_bytes(*source));
  const auto names = list_of_names(
      [](const auto& known) { return functions_of(known.format).open_images != nullptr; });
  if (!format) {
    throw Fault(
        FaultKind::unsupported,
        "the content is of no known format, and may be headerless; images are read from " + names);
  }
  const FormatFunctions& functions = functions_of(*format);
  if (functions.open_images == nullptr) {
    throw Fault(FaultKind::unsupported,
                std::string(functions.missing) + "; images are read from " + names);
  }
  return functions.open_images(std::move(source));
}

}  // namespace kv::polarization
