// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "toolkit/image_files/formats/png_header.h"

#include <array>
#include <bit>
#include <string>

#include "kv/polarization/fault.h"
#include "toolkit/image_files/formats/png_chunks.h"

namespace kv::polarization {
namespace {

constexpr std::size_t kLength = 13;

/// The kinds of pixels, with the bits a channel that each may have.
struct Kind {
  const char* name;
  std::uint32_t bits;  ///< their sum
  PngColour colour;
};
constexpr Kind kKinds[] = {{"grey", 1 + 2 + 4 + 8 + 16, PngColour::grey},
                           {"RGB colour", 8 + 16, PngColour::rgb},
                           {"palette colour", 1 + 2 + 4 + 8, PngColour::palette},
                           {"grey with alpha", 8 + 16, PngColour::grey_alpha},
                           {"RGB colour", 8 + 16, PngColour::rgba}};

const Kind& kind_of(const PngHeader& header) {
  for (const Kind& kind : kKinds) {
    const auto bits = static_cast<std::uint32_t>(header.bits);
    if (kind.colour == header.colour && std::has_single_bit(bits) && (kind.bits & bits) != 0) {
      return kind;
    }
  }
  fail_as_damaged_png("no image has colour type " + std::to_string(int(header.colour)) + " with " +
                      std::to_string(header.bits) + " bits");
}

}  // namespace

PngHeader read_png_header(ByteSource& source) {
  const PngChunk chunk = png_chunk_at(source, kPngStart.size());
  if (chunk.kind != "IHDR" || chunk.length != kLength) fail_as_damaged_png("it has no header");
  std::array<std::uint8_t, kLength + kPngChecksum> bytes;
  read_png_chunk(source, chunk, bytes.data());
  const PngHeader header{png_number(bytes.data()), png_number(bytes.data() + 4), bytes[8],
                         static_cast<PngColour>(bytes[9]), bytes[12] == 1};
  kind_of(header);
  if (bytes[10] != 0 || bytes[11] != 0 || bytes[12] > 1) {
    fail_as_damaged_png("its header names unknown methods");
  }
  return header;
}

void check_is_raw_frame(const PngHeader& header) {
  if (header.colour == PngColour::grey && header.bits >= 8) return;
  throw Fault(FaultKind::unsupported, "the PNG is " + std::string(kind_of(header).name) + " of " +
                                          std::to_string(header.bits) +
                                          " bits; a raw frame is grey with 8 or 16 bits");
}

void write_png_header(PendingFile& file, const PngHeader& header) {
  std::array<std::uint8_t, kLength> bytes{};
  put_png_number(header.width, bytes.data());
  put_png_number(header.height, bytes.data() + 4);
  bytes[8] = static_cast<std::uint8_t>(header.bits);
  bytes[9] = static_cast<std::uint8_t>(header.colour);
  file.write(kPngStart.data(), kPngStart.size());
  write_png_chunk(file, "IHDR", bytes);
}

}  // namespace kv::polarization
