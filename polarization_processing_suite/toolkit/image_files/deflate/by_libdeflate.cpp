// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include <libdeflate.h>

#include <memory>

#include "kv/polarization/fault.h"
#include "toolkit/image_files/deflate/zlib_library.h"

namespace kv::polarization {
namespace {

constexpr int kLevel = 6;

struct Free {
  void operator()(libdeflate_compressor* state) const { libdeflate_free_compressor(state); }
  void operator()(libdeflate_decompressor* state) const { libdeflate_free_decompressor(state); }
};

template <class State>
std::unique_ptr<State, Free> require(State* state) {
  if (state != nullptr) return std::unique_ptr<State, Free>(state);
  throw Fault(FaultKind::memory, "there is no memory for libdeflate; close other programs");
}

}  // namespace

// For a null pointer both functions return what to begin with, whatever came before.
std::uint32_t crc32_of(std::uint32_t before, std::span<const std::uint8_t> bytes) {
  return bytes.empty() ? before : libdeflate_crc32(before, bytes.data(), bytes.size());
}

std::uint32_t adler32_of(std::uint32_t before, std::span<const std::uint8_t> bytes) {
  return bytes.empty() ? before : libdeflate_adler32(before, bytes.data(), bytes.size());
}

bool inflate_stream(std::span<const std::uint8_t> stream, std::span<std::uint8_t> bytes) {
  const auto state = require(libdeflate_alloc_decompressor());
  return libdeflate_zlib_decompress(state.get(), stream.data(), stream.size(), bytes.data(),
                                    bytes.size(), nullptr) == LIBDEFLATE_SUCCESS;
}

void deflate_small(std::span<const std::uint8_t> bytes, Buffer<std::uint8_t>& stream) {
  const auto state = require(libdeflate_alloc_compressor(kLevel));
  stream.resize(libdeflate_zlib_compress_bound(state.get(), bytes.size()));
  stream.resize(libdeflate_zlib_compress(state.get(), bytes.data(), bytes.size(), stream.data(),
                                         stream.size()));
}

}  // namespace kv::polarization
