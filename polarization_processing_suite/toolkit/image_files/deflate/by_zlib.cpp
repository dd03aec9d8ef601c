// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

// Takes the place of by_libdeflate.cpp where there is no libdeflate.
#include <zlib.h>

#include "kv/polarization/fault.h"
#include "toolkit/image_files/deflate/zlib_library.h"

namespace kv::polarization {
namespace {

constexpr int kLevel = 6;

/// zlib counts in 32 bits on some systems.
bool is_countable(std::size_t size) { return static_cast<uLong>(size) == size; }

[[noreturn]] void fail_for_memory() {
  throw Fault(FaultKind::memory, "there is no memory for zlib; close other programs");
}

}  // namespace

// For a null pointer both functions return what to begin with, whatever came before.
std::uint32_t crc32_of(std::uint32_t before, std::span<const std::uint8_t> bytes) {
  return bytes.empty() ? before
                       : static_cast<std::uint32_t>(crc32_z(before, bytes.data(), bytes.size()));
}

std::uint32_t adler32_of(std::uint32_t before, std::span<const std::uint8_t> bytes) {
  return bytes.empty() ? before
                       : static_cast<std::uint32_t>(adler32_z(before, bytes.data(), bytes.size()));
}

bool inflate_stream(std::span<const std::uint8_t> stream, std::span<std::uint8_t> bytes) {
  if (!is_countable(stream.size()) || !is_countable(bytes.size())) return false;
  auto taken = static_cast<uLong>(stream.size());
  auto given = static_cast<uLong>(bytes.size());
  const int result = uncompress2(bytes.data(), &given, stream.data(), &taken);
  if (result == Z_MEM_ERROR) fail_for_memory();
  return result == Z_OK && given == bytes.size();
}

void deflate_small(std::span<const std::uint8_t> bytes, Buffer<std::uint8_t>& stream) {
  if (!is_countable(bytes.size())) fail_for_memory();
  auto size = compressBound(static_cast<uLong>(bytes.size()));
  stream.resize(size);
  if (compress2(stream.data(), &size, bytes.data(), static_cast<uLong>(bytes.size()), kLevel) !=
      Z_OK) {
    fail_for_memory();
  }
  stream.resize(size);
}

}  // namespace kv::polarization
