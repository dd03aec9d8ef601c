// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "command_line/batch/frame_source.h"

#include <iostream>
#include <span>
#include <utility>

#include "command_line/options/common_options.h"
#include "kv/polarization/fault.h"
#include "platform/process.h"

namespace kv::polarization {

Buffer<std::uint8_t> FileMemory::take() {
  const std::lock_guard lock(mutex_);
  if (free_.empty()) return {};
  Buffer<std::uint8_t> buffer = std::move(free_.back());
  free_.pop_back();
  return buffer;
}

void FileMemory::give_back(Buffer<std::uint8_t> buffer) {
  const std::lock_guard lock(mutex_);
  free_.push_back(std::move(buffer));
}

FrameSource::FrameSource(const std::filesystem::path& file,
                         const std::optional<RawShape>& raw_shape, FileMemory& memory) {
  std::error_code unknown;
  const std::uintmax_t size = std::filesystem::file_size(file, unknown);
  if (!unknown && size <= kLargestFileInMemory) {
    memory_ = &memory;
    content_ = memory.take();
    read_file(file, content_);
    identity_ = kv::polarization::identity_of(content_);
    const std::span<const std::uint8_t> bytes(content_);
    reader_ = open_frames_of_user(std::as_bytes(bytes), file, raw_shape);
  } else {
    identity_ = identity_of(file);
    reader_ = open_frames_of_user(file, raw_shape);
  }
  count_ = reader_->count();
}

FrameSource::FrameSource(const std::optional<RawShape>& raw_shape) {
  platform::make_standard_input_binary();
  reader_ = open_frames(std::cin, raw_shape);
  count_frames();
}

FrameSource::FrameSource(const std::filesystem::path& pipe,
                         const std::optional<RawShape>& raw_shape)
    : reader_(open_frames_of_user(pipe, raw_shape)) {
  count_frames();
}

void FrameSource::count_frames() {
  try {
    count_ = reader_->count();
  } catch (const Fault& fault) {
    if (fault.kind() != FaultKind::state) throw;
  }
}

FrameSource::~FrameSource() {
  reader_.reset();
  if (memory_ != nullptr) memory_->give_back(std::move(content_));
}

void FrameSource::read(std::size_t page, Frame& frame, std::vector<std::string>& notes) {
  const std::lock_guard lock(mutex_);
  reader_->read(page, frame);
  notes = reader_->notes();
}

bool FrameSource::read_next(Frame& frame, std::size_t& page) {
  const std::lock_guard lock(mutex_);
  page = next_;
  if (ended_) return false;
  ++next_;
  ended_ = !reader_->read_next(frame);
  if (ended_) --next_;
  return !ended_;
}

}  // namespace kv::polarization
