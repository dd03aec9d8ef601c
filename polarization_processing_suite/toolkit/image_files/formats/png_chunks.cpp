// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "toolkit/image_files/formats/png_chunks.h"

#include <algorithm>
#include <array>

#include "kv/polarization/fault.h"
#include "toolkit/image_files/deflate/zlib_library.h"
#include "toolkit/image_files/format_table.h"

namespace kv::polarization {
namespace {

/// A length, and a kind of four letters.
constexpr std::size_t kHead = 8;

/// Between keyword and text: the end of the keyword, the mark of an uncompressed text, its method,
/// and no language nor translated keyword with their ends.
constexpr std::string_view kBeforeText("\0\0\0\0\0", 5);

std::span<const std::uint8_t> bytes_of(std::string_view text) {
  return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

bool is_letter(char c) { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'); }

/// Of an iTXt chunk's content; none when it has another keyword, or is compressed.
std::optional<std::string> text_in(std::string_view content, std::string_view keyword) {
  constexpr std::string_view uncompressed("\0\0", 2);
  if (!content.starts_with(keyword)) return std::nullopt;
  content.remove_prefix(keyword.size());
  if (!content.starts_with(uncompressed)) return std::nullopt;
  content.remove_prefix(std::min(content.size(), uncompressed.size() + 1));
  for (int field = 0; field < 2; ++field) {  // language and translated keyword
    const std::size_t end = content.find('\0');
    if (end == std::string_view::npos) return std::nullopt;
    content.remove_prefix(end + 1);
  }
  return std::string(content);
}

}  // namespace

std::uint32_t png_number(const std::uint8_t* bytes) {
  return std::uint32_t{bytes[0]} << 24 | std::uint32_t{bytes[1]} << 16 |
         std::uint32_t{bytes[2]} << 8 | bytes[3];
}

void put_png_number(std::uint32_t number, std::uint8_t* bytes) {
  for (int i = 0; i < 4; ++i) bytes[i] = static_cast<std::uint8_t>(number >> (24 - 8 * i));
}

void fail_as_damaged_png(const std::string& reason) {
  throw Fault(FaultKind::file,
              "the PNG is damaged or truncated (" + reason + "); an intact one is needed");
}

PngChunk png_chunk_at(ByteSource& source, std::uint64_t position) {
  std::array<std::uint8_t, kHead> head;
  if (source.read(position, head.data(), kHead) != kHead) {
    fail_as_damaged_png("the file ends too early");
  }
  PngChunk chunk{{head.begin() + 4, head.end()}, position + kHead, png_number(head.data())};
  if (!std::all_of(chunk.kind.begin(), chunk.kind.end(), is_letter)) {
    fail_as_damaged_png("at byte " + std::to_string(position) + " a chunk has to begin");
  }
  if (chunk.end() > source.size()) fail_as_damaged_png("the file ends too early");
  return chunk;
}

void read_png_chunk(ByteSource& source, const PngChunk& chunk, std::uint8_t* to) {
  const std::size_t size = chunk.length + kPngChecksum;
  if (source.read(chunk.start, to, size) != size) fail_as_damaged_png("the file ends too early");
  const std::uint32_t checksum = crc32_of(crc32_of(0, bytes_of(chunk.kind)), {to, chunk.length});
  if (checksum != png_number(to + chunk.length)) {
    fail_as_damaged_png("the checksum of its chunk " + chunk.kind + " is wrong");
  }
}

void write_png_chunk(PendingFile& file, std::string_view kind,
                     std::span<const std::uint8_t> content) {
  std::array<std::uint8_t, kHead> head;
  put_png_number(static_cast<std::uint32_t>(content.size()), head.data());
  std::copy(kind.begin(), kind.end(), head.begin() + 4);
  std::array<std::uint8_t, kPngChecksum> checksum;
  put_png_number(crc32_of(crc32_of(0, bytes_of(kind)), content), checksum.data());
  file.write(head.data(), head.size());
  file.write(content.data(), content.size());
  file.write(checksum.data(), checksum.size());
}

std::optional<std::string> png_text(ByteSource& source, std::string_view keyword) {
  Buffer<std::uint8_t> content;
  for (std::uint64_t position = kPngStart.size();;) {
    const PngChunk chunk = png_chunk_at(source, position);
    if (chunk.kind == "IDAT" || chunk.kind == "IEND") return std::nullopt;
    if (chunk.kind == "iTXt" && chunk.length <= kMostText) {
      content.resize(chunk.length + kPngChecksum);
      read_png_chunk(source, chunk, content.data());
      auto text = text_in({reinterpret_cast<const char*>(content.data()), chunk.length}, keyword);
      if (text) return text;
    }
    position = chunk.end();
  }
}

void write_png_text(PendingFile& file, std::string_view keyword, std::string_view text) {
  if (text.empty()) return;
  std::string content(keyword);
  content.append(kBeforeText).append(text);
  write_png_chunk(file, "iTXt", bytes_of(content));
}

}  // namespace kv::polarization
