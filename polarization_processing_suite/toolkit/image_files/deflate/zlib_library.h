// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <span>

#include "kv/polarization/buffer.h"

// What a library does for streams of zlib's kind: libdeflate, or zlib where there is no other.
namespace kv::polarization {

/// CRC-32, going on from that of the bytes before; 0 when there are none.
std::uint32_t crc32_of(std::uint32_t before, std::span<const std::uint8_t> bytes);

/// Adler-32, going on from that of the bytes before; 1 when there are none.
std::uint32_t adler32_of(std::uint32_t before, std::span<const std::uint8_t> bytes);

/// Inflates a stream that gives just as many bytes as there is room for. False when it is damaged,
/// or gives fewer or more. Throws Fault of kind memory.
bool inflate_stream(std::span<const std::uint8_t> stream, std::span<std::uint8_t> bytes);

/// The stream of some bytes at level 6, which searches for repeats. Throws Fault of kind memory.
void deflate_small(std::span<const std::uint8_t> bytes, Buffer<std::uint8_t>& stream);

}  // namespace kv::polarization
