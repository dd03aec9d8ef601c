// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "command_line/batch/file_hash.h"

#define XXH_INLINE_ALL
#include <xxhash.h>

#include <fstream>
#include <string_view>

#include "kv/polarization/fault.h"

namespace kv::polarization {
namespace {

std::string hex_of(const XXH128_hash_t& hash) {
  XXH128_canonical_t bytes;
  XXH128_canonicalFromHash(&bytes, hash);
  std::string text;
  constexpr std::string_view digits = "0123456789abcdef";
  for (const unsigned char byte : bytes.digest) {
    text += digits[byte >> 4];
    text += digits[byte & 15];
  }
  return text;
}

[[noreturn]] void refuse_unreadable(const std::filesystem::path& file) {
  if (std::filesystem::is_directory(file)) {
    throw Fault(FaultKind::file, "this is a folder; name the frame files in it");
  }
  const bool exists = std::filesystem::exists(file);
  throw Fault(FaultKind::file, exists ? "this file cannot be read; its permissions, or its disk, "
                                        "are in the way"
                                      : "there is no such file");
}

std::ifstream open(const std::filesystem::path& file) {
  std::ifstream stream(file, std::ios::binary);
  if (!stream || std::filesystem::is_directory(file)) refuse_unreadable(file);
  return stream;
}

}  // namespace

ContentIdentity identity_of(std::span<const std::uint8_t> content) {
  return {content.size(), hex_of(XXH3_128bits(content.data(), content.size()))};
}

std::string hash_of(const std::string& text) {
  return hex_of(XXH3_128bits(text.data(), text.size()));
}

ContentIdentity identity_of(const std::filesystem::path& file) {
  std::ifstream stream = open(file);
  Buffer<char> piece;
  piece.resize(std::size_t{1} << 22);
  XXH3_state_t state;
  XXH3_128bits_reset(&state);
  std::uint64_t size = 0;
  do {
    stream.read(piece.data(), static_cast<std::streamsize>(piece.size()));
    const auto count = static_cast<std::size_t>(stream.gcount());
    XXH3_128bits_update(&state, piece.data(), count);
    size += count;
  } while (stream);
  if (!stream.eof()) refuse_unreadable(file);
  return {size, hex_of(XXH3_128bits_digest(&state))};
}

void read_file(const std::filesystem::path& file, Buffer<std::uint8_t>& content) {
  std::ifstream stream = open(file);
  const std::uintmax_t size = std::filesystem::file_size(file);
  content.resize(static_cast<std::size_t>(size));
  stream.read(reinterpret_cast<char*>(content.data()), static_cast<std::streamsize>(size));
  if (static_cast<std::uintmax_t>(stream.gcount()) != size) refuse_unreadable(file);
}

}  // namespace kv::polarization
