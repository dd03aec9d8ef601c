// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <filesystem>
#include <istream>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "kv/image_files/image_format.h"
#include "kv/image_files/pixel_format.h"
#include "kv/polarization/frame.h"

namespace kv::polarization {

/// The frames of one file. They are read one at a time, so that a long file needs the memory of one
/// frame.
///
/// Threads: one at a time uses a reader. Its functions throw Fault alone: of kind file for what is
/// damaged or truncated, unsupported for a kind of image that is no raw frame, or that this build
/// cannot read. A frame that fails to be read keeps its memory, and holds nothing of use; the other
/// frames of the file can still be read.
class FrameReader {
 public:
  virtual ~FrameReader() = default;

  /// Frames in the file. Throws Fault of kind state for a pipe, which tells only at its end.
  virtual std::size_t count() const = 0;

  /// Reads a frame, from 0 up, into memory that is used again. Throws Fault of kind argument when
  /// there is no such frame.
  void read(std::size_t index, Frame& frame);
  Frame read(std::size_t index);

  /// Reads the frame that follows the one read last; false behind the last one. The way to read a
  /// pipe. After a frame that failed it goes on with the next one.
  virtual bool read_next(Frame& frame);

  /// What the file says of the frame read last that its samples do not show, a line each: such as
  /// an orientation, which is left out of account, as a mosaic must be taken as it was stored.
  const std::vector<std::string>& notes() const { return notes_; }

 protected:
  FrameReader() = default;
  FrameReader(const FrameReader&) = default;
  FrameReader& operator=(const FrameReader&) = default;

  /// For those who read: a line of notes().
  void add_note(std::string line) { notes_.push_back(std::move(line)); }

 private:
  virtual void load(std::size_t index, Frame& frame) = 0;

  std::size_t next_ = 0;
  std::vector<std::string> notes_;
};

/// The shape of headerless frames, which lie one behind the other, each from a new byte on.
struct RawShape {
  int width;                                       ///< pixels
  int height;                                      ///< pixels
  PixelFormat pixel_format = PixelFormat::mono16;  ///< of their samples
};

/// Opens frames, whose content decides on the format, not their name. With a raw shape the content
/// is taken as headerless, whatever it is.
///
/// A stream is read from where it stands. It and memory must outlive the reader. What cannot seek,
/// such as a pipe, gives raw frames one by one, as they come; in any other format it is first read
/// to its end, up to a gigabyte.
///
/// Sizes that a header claims are held against the size of the file before memory is asked for.
/// Throws Fault as FrameReader does; of kind argument for a raw shape that no frame has. Messages
/// do not repeat the path.
std::unique_ptr<FrameReader> open_frames(const std::filesystem::path& path,
                                         const std::optional<RawShape>& raw_shape = std::nullopt);
std::unique_ptr<FrameReader> open_frames(std::istream& stream,
                                         const std::optional<RawShape>& raw_shape = std::nullopt);
std::unique_ptr<FrameReader> open_frames(std::span<const std::byte> memory,
                                         const std::optional<RawShape>& raw_shape = std::nullopt);

/// The format that a file's content begins like; none when it is of no known one, and may be
/// headerless, or when it is no regular file. Throws Fault of kind file when it cannot be read.
std::optional<ImageFormat> format_of_content(const std::filesystem::path& path);

}  // namespace kv::polarization
