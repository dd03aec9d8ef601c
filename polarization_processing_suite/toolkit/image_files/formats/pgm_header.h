// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "toolkit/image_files/byte_source.h"
#include "toolkit/image_files/stored_samples.h"

namespace kv::polarization {

struct PgmImage {
  std::uint64_t width = 0;
  std::uint64_t height = 0;
  int channels = 1;
  int bit_depth = 0;
  std::uint64_t first_byte = 0;

  std::uint64_t pixel_size() const {
    return static_cast<unsigned>(channels) * bytes_a_sample(bit_depth);
  }
  std::uint64_t size() const { return width * height * pixel_size(); }
};

/// Of all images of a file; of colour, too, or grey ones alone. Throws Fault of kind file for
/// anything else, and for images that end behind the file.
std::vector<PgmImage> read_pgm_headers(ByteSource& source, bool colour_too);

/// Start of the comment that tells what made an image.
constexpr std::string_view kPgmProvenance = "# provenance ";

/// The rest of the first such comment that follows the file's first line.
std::optional<std::string> pgm_provenance(ByteSource& source);

}  // namespace kv::polarization
