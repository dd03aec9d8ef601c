// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "kv/image_files/frame_reader.h"

#include <string>
#include <string_view>
#include <system_error>
#include <utility>

#include "kv/polarization/fault.h"
#include "toolkit/image_files/format_table.h"

namespace kv::polarization {
namespace {

[[noreturn]] void refuse_content(std::string_view bytes) {
  if (bytes.size() >= 2 && bytes[0] == 'P' && bytes[1] >= '1' && bytes[1] <= '7') {
    throw Fault(FaultKind::unsupported, "this is a netpbm image of kind " +
                                            std::string(bytes.substr(0, 2)) +
                                            "; a frame must be binary grey, P5");
  }
  throw Fault(FaultKind::unsupported, "the content is of no known format; frames are read from " +
                                          list_of_names([](const auto& format) {
                                            return format.has_header && format.reads;
                                          }) +
                                          ", or without a header when their shape is given");
}

std::unique_ptr<FrameReader> open_source(SourcePointer source,
                                         const std::optional<RawShape>& raw_shape) {
  if (source->size() == 0) {
    throw Fault(FaultKind::file, "the file is empty; a frame was expected");
  }
  if (raw_shape) return open_raw(std::move(source), *raw_shape);
  const std::string bytes = first_bytes(*source);
  const std::optional<ImageFormat> format = format_of_start(bytes);
  if (!format) refuse_content(bytes);
  const FormatFunctions& functions = functions_of(*format);
  if (functions.open == nullptr) {
    throw Fault(FaultKind::unsupported,
                std::string(functions.missing) + "; it reads " +
                    list_of_names([](const auto& known) { return known.reads; }));
  }
  return functions.open(std::move(source));
}

std::unique_ptr<FrameReader> open_stream_frames(StreamPointer stream,
                                                const std::optional<RawShape>& raw_shape) {
  if (raw_shape && !can_seek(*stream)) return open_raw_pipe(std::move(stream), *raw_shape);
  return open_source(source_of(std::move(stream)), raw_shape);
}

}  // namespace

void FrameReader::read(std::size_t index, Frame& frame) {
  if (index >= count()) {
    throw Fault(FaultKind::argument, "there is no frame " + std::to_string(index) +
                                         "; the file has " + std::to_string(count()) +
                                         ", numbered from 0 up");
  }
  notes_.clear();
  next_ = index + 1;
  load(index, frame);
}

Frame FrameReader::read(std::size_t index) {
  Frame frame;
  read(index, frame);
  return frame;
}

bool FrameReader::read_next(Frame& frame) {
  if (next_ >= count()) return false;
  read(next_, frame);
  return true;
}

std::unique_ptr<FrameReader> open_frames(const std::filesystem::path& path,
                                         const std::optional<RawShape>& raw_shape) {
  return open_stream_frames(open_stream(path), raw_shape);
}

std::unique_ptr<FrameReader> open_frames(std::istream& stream,
                                         const std::optional<RawShape>& raw_shape) {
  // Points to the caller's stream, and owns nothing.
  return open_stream_frames(StreamPointer(StreamPointer(), &stream), raw_shape);
}

std::unique_ptr<FrameReader> open_frames(std::span<const std::byte> memory,
                                         const std::optional<RawShape>& raw_shape) {
  return open_source(source_of(memory), raw_shape);
}

std::optional<ImageFormat> format_of_content(const std::filesystem::path& path) {
  // The content of a pipe would be gone when it was looked at.
  std::error_code ignored;
  if (!std::filesystem::is_regular_file(path, ignored)) return std::nullopt;
  return format_of_start(first_bytes(*source_of(open_stream(path))));
}

}  // namespace kv::polarization
