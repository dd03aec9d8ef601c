// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <istream>
#include <memory>
#include <span>

#include "kv/polarization/buffer.h"

namespace kv::polarization {

/// Bytes of a file, wherever they are kept, to be read at any position.
class ByteSource {
 public:
  virtual ~ByteSource() = default;
  virtual std::uint64_t size() const = 0;

  /// Reads up to that many bytes from a position on; returns how many there were.
  virtual std::size_t read(std::uint64_t position, void* data, std::size_t size) = 0;

 protected:
  ByteSource() = default;
  ByteSource(const ByteSource&) = default;
  ByteSource& operator=(const ByteSource&) = default;
};

using SourcePointer = std::unique_ptr<ByteSource>;

/// A caller's stream, or one of our own.
using StreamPointer = std::shared_ptr<std::istream>;

/// Throws Fault of kind file when there is no such file, or it cannot be read.
StreamPointer open_stream(const std::filesystem::path& path);

bool can_seek(std::istream& stream);

/// Of memory that somebody else keeps.
SourcePointer source_of(std::span<const std::byte> memory);

/// The same bytes, read at once and kept in memory, for readers that go through all of a file in
/// small pieces. A source above a gigabyte stays as it is.
SourcePointer read_whole(SourcePointer source);

/// Of a stream from where it stands. One that cannot seek is read to its end at once; throws Fault
/// when that does not come within a gigabyte.
SourcePointer source_of(StreamPointer stream);

}  // namespace kv::polarization
