// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "kv/image_files/pending_file.h"
#include "kv/polarization/buffer.h"
#include "toolkit/image_files/byte_source.h"

namespace kv::polarization {

constexpr std::string_view kPngStart = "\x89PNG\r\n\x1A\n";

/// Keyword of the entry that tells what made an image.
constexpr std::string_view kPngProvenance = "Provenance";

/// Of the checksum behind a chunk's content.
constexpr std::size_t kPngChecksum = 4;

/// Numbers of PNG have their highest byte first.
std::uint32_t png_number(const std::uint8_t* bytes);
void put_png_number(std::uint32_t number, std::uint8_t* bytes);

/// A chunk as its head tells it.
struct PngChunk {
  std::string kind;      ///< four letters
  std::uint64_t start;   ///< of its content, in the file
  std::uint32_t length;  ///< of its content

  std::uint64_t end() const { return start + length + kPngChecksum; }

  /// Whoever does not know such a chunk may go on without it.
  bool is_ancillary() const { return (kind[0] & 0x20) != 0; }
};

/// Throws Fault of kind file with that reason.
[[noreturn]] void fail_as_damaged_png(const std::string& reason);

/// The chunk whose head is at a position. Throws Fault of kind file when the file ends before the
/// chunk does.
PngChunk png_chunk_at(ByteSource& source, std::uint64_t position);

/// Reads a chunk's content, and the checksum behind it, into memory for both. Throws Fault of kind
/// file when they do not fit each other.
void read_png_chunk(ByteSource& source, const PngChunk& chunk, std::uint8_t* to);

void write_png_chunk(PendingFile& file, std::string_view kind,
                     std::span<const std::uint8_t> content);

/// The uncompressed UTF-8 entry of that keyword that stands before the image; none where there is
/// none. Throws Fault of kind file for a PNG that is damaged.
std::optional<std::string> png_text(ByteSource& source, std::string_view keyword);

/// Writes such an entry. An empty text needs none.
void write_png_text(PendingFile& file, std::string_view keyword, std::string_view text);

}  // namespace kv::polarization
