// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "toolkit/image_files/formats/formats.h"
#include "toolkit/image_files/formats/tiff_stream.h"

namespace kv::polarization {

std::optional<std::string> tiff_provenance(ByteSource& source) {
  const TiffStream stream(source);
  const char* text = nullptr;
  if (stream.get() == nullptr || TIFFGetField(stream.get(), TIFFTAG_SOFTWARE, &text) != 1 ||
      text == nullptr) {
    return std::nullopt;
  }
  return text;
}

}  // namespace kv::polarization
