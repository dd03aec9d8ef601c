// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "command_line/outputs/stack_output.h"

namespace kv::polarization {

StackOutput::StackOutput(const std::filesystem::path& path, ImageFormat format, std::size_t images,
                         const WriteOptions& options)
    : file_(path), writer_(open_stack(file_, format, images, options)) {}

bool StackOutput::add(std::size_t place, const std::function<void(StackWriter&)>& work) {
  std::unique_lock lock(mutex_);
  turn_.wait(lock, [&] { return given_up_ || next_ == place; });
  if (given_up_) return false;
  try {
    work(*writer_);
  } catch (...) {
    given_up_ = true;
    turn_.notify_all();
    throw;
  }
  ++next_;
  turn_.notify_all();
  return true;
}

void StackOutput::give_up() {
  const std::lock_guard lock(mutex_);
  given_up_ = true;
  turn_.notify_all();
}

void StackOutput::publish(Publishing publishing) {
  writer_->finish();
  writer_.reset();
  file_.sync();
  file_.close();
  if (publishing == Publishing::as_new) {
    file_.publish_new();
  } else {
    file_.publish();
  }
}

}  // namespace kv::polarization
