// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "toolkit/image_files/byte_source.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <string>
#include <system_error>
#include <utility>

#include "kv/polarization/fault.h"

namespace kv::polarization {
namespace {

constexpr std::size_t kMostInMemory = std::size_t{1} << 30;

/// Bytes that are fetched at once for readers of small pieces.
constexpr std::size_t kWindow = 32768;

class MemorySource : public ByteSource {
 public:
  explicit MemorySource(std::span<const std::byte> memory) : memory_(memory) {}
  std::uint64_t size() const override { return memory_.size(); }
  std::size_t read(std::uint64_t position, void* data, std::size_t size) override {
    if (position >= memory_.size()) return 0;
    const auto rest = memory_.subspan(static_cast<std::size_t>(position));
    const std::size_t count = std::min(size, rest.size());
    if (count > 0) std::memcpy(data, rest.data(), count);
    return count;
  }

 private:
  std::span<const std::byte> memory_;
};

class KeptSource : public MemorySource {
 public:
  explicit KeptSource(Buffer<std::uint8_t> bytes)
      : MemorySource(std::as_bytes(std::span(bytes))), bytes_(std::move(bytes)) {}

 private:
  Buffer<std::uint8_t> bytes_;
};

/// Large pieces go from the stream to their place, as a copy in between, or one through memory that
/// is not aligned, takes longer than the reading.
class StreamSource : public ByteSource {
 public:
  explicit StreamSource(StreamPointer stream)
      : stream_(std::move(stream)), origin_(stream_->tellg()) {
    stream_->seekg(0, std::ios::end);
    const auto end = static_cast<std::streamoff>(stream_->tellg());
    size_ = static_cast<std::uint64_t>(std::max<std::streamoff>(end - origin_, 0));
  }

  std::uint64_t size() const override { return size_; }

  std::size_t read(std::uint64_t position, void* data, std::size_t size) override {
    if (size >= kWindow) return fetch(position, data, size);
    if (position < window_start_ || position + size > window_start_ + window_.size()) {
      window_.resize(kWindow);
      window_start_ = position;
      window_.resize(fetch(position, window_.data(), kWindow));
    }
    const std::size_t first = static_cast<std::size_t>(position - window_start_);
    const std::size_t count = std::min(size, window_.size() - first);
    std::copy_n(window_.data() + first, count, static_cast<std::uint8_t*>(data));
    return count;
  }

 private:
  std::size_t fetch(std::uint64_t position, void* data, std::size_t size) {
    if (position >= size_) return 0;
    stream_->clear();
    stream_->seekg(origin_ + static_cast<std::streamoff>(position));
    errno = 0;
    stream_->read(static_cast<char*>(data), static_cast<std::streamsize>(size));
    if (stream_->bad()) {
      const std::string why =
          errno == 0 ? "unknown reason" : std::generic_category().message(errno);
      throw Fault(FaultKind::file,
                  "reading failed: " + why + "; check the disk or network that the file is on");
    }
    return static_cast<std::size_t>(stream_->gcount());
  }

  StreamPointer stream_;
  std::streamoff origin_;
  std::uint64_t size_ = 0;
  std::uint64_t window_start_ = 0;
  Buffer<std::uint8_t> window_;
};

Buffer<std::uint8_t> read_to_end(std::istream& stream) {
  Buffer<std::uint8_t> bytes;
  std::size_t size = 0;
  while (stream) {
    if (size > kMostInMemory) {
      throw Fault(FaultKind::file,
                  "more than a gigabyte came through the pipe without an end; "
                  "store it in a file, or read it as headerless frames");
    }
    Buffer<std::uint8_t> longer(std::max(2 * size, kWindow));
    std::copy_n(bytes.data(), size, longer.data());
    bytes = std::move(longer);
    stream.read(reinterpret_cast<char*>(bytes.data() + size),
                static_cast<std::streamsize>(bytes.size() - size));
    size += static_cast<std::size_t>(stream.gcount());
  }
  bytes.resize(size);
  return bytes;
}

}  // namespace

StreamPointer open_stream(const std::filesystem::path& path) {
  std::error_code failure;
  const std::filesystem::file_status status = std::filesystem::status(path, failure);
  if (status.type() == std::filesystem::file_type::not_found) {
    throw Fault(FaultKind::file, "there is no such file; check the path");
  }
  if (status.type() == std::filesystem::file_type::directory) {
    throw Fault(FaultKind::file, "this is a folder; name the frame files in it");
  }
  auto stream = std::make_shared<std::ifstream>();
  // The stream's own buffer would take the first bytes of a frame, and misalign the rest.
  stream->rdbuf()->pubsetbuf(nullptr, 0);
  errno = 0;
  stream->open(path, std::ios::binary);
  if (!*stream) {
    throw Fault(FaultKind::file, "cannot be opened: " + std::generic_category().message(errno) +
                                     "; check that you may read it");
  }
  return stream;
}

bool can_seek(std::istream& stream) {
  const bool can = stream.tellg() != std::istream::pos_type(-1);
  stream.clear();
  return can;
}

SourcePointer source_of(std::span<const std::byte> memory) {
  return std::make_unique<MemorySource>(memory);
}

SourcePointer source_of(StreamPointer stream) {
  if (can_seek(*stream)) return std::make_unique<StreamSource>(std::move(stream));
  return std::make_unique<KeptSource>(read_to_end(*stream));
}

SourcePointer read_whole(SourcePointer source) {
  if (source->size() > kMostInMemory) return source;
  Buffer<std::uint8_t> bytes(static_cast<std::size_t>(source->size()));
  bytes.resize(source->read(0, bytes.data(), bytes.size()));
  return std::make_unique<KeptSource>(std::move(bytes));
}

}  // namespace kv::polarization
