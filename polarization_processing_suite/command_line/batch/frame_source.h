// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <filesystem>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "command_line/batch/file_hash.h"
#include "kv/image_files/frame_reader.h"

namespace kv::polarization {

/// Up to this many bytes a file is read at once: for its hash and its frames.
inline constexpr std::uint64_t kLargestFileInMemory = std::uint64_t{1} << 28;

/// Memory of files that were read, to be used again: fresh memory costs as much as reading does.
class FileMemory {
 public:
  Buffer<std::uint8_t> take();
  void give_back(Buffer<std::uint8_t> buffer);

 private:
  std::mutex mutex_;
  std::vector<Buffer<std::uint8_t>> free_;
};

/// An input that frames are taken from, by any number of threads.
class FrameSource {
 public:
  /// A file. Throws Fault as open_frames does. The memory must outlive the source.
  FrameSource(const std::filesystem::path& file, const std::optional<RawShape>& raw_shape,
              FileMemory& memory);

  /// Standard input, or what a shell has opened under the name of a file. Frames are counted unless
  /// they are headerless ones of a pipe.
  explicit FrameSource(const std::optional<RawShape>& raw_shape);
  FrameSource(const std::filesystem::path& pipe, const std::optional<RawShape>& raw_shape);

  ~FrameSource();
  FrameSource(const FrameSource&) = delete;
  FrameSource& operator=(const FrameSource&) = delete;

  /// Empty for what is no file.
  const std::optional<ContentIdentity>& identity() const { return identity_; }

  /// Frames; none when only the end of the pipe will tell.
  std::optional<std::size_t> count() const { return count_; }

  /// Reads a frame; `notes` become what the file says of it. Throws Fault as FrameReader does.
  void read(std::size_t page, Frame& frame, std::vector<std::string>& notes);

  /// Reads the pipe's next frame and tells its number; false at the end.
  bool read_next(Frame& frame, std::size_t& page);

 private:
  void count_frames();

  std::mutex mutex_;
  FileMemory* memory_ = nullptr;
  Buffer<std::uint8_t> content_;
  std::unique_ptr<FrameReader> reader_;
  std::optional<ContentIdentity> identity_;
  std::optional<std::size_t> count_;
  std::size_t next_ = 0;
  bool ended_ = false;
};

}  // namespace kv::polarization
