// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "command_line/batch/frame_queue.h"

#include <utility>

namespace kv::polarization {

FrameQueue::FrameQueue(std::size_t inputs, Open open, Pages pages)
    : inputs_(inputs), open_(std::move(open)), pages_(std::move(pages)) {}

std::optional<FrameTask> FrameQueue::next() {
  while (true) {
    std::size_t input = 0;
    {
      const std::lock_guard lock(mutex_);
      if (auto task = next_of_shared()) return task;
      if (next_input_ == inputs_) return std::nullopt;
      input = next_input_++;
    }
    std::shared_ptr<FrameSource> source = open_(input);
    if (source == nullptr) continue;
    Shared shared{input, source, {}};
    if (source->count()) shared.pages = pages_(input);
    const std::lock_guard lock(mutex_);
    shared_.push_back(std::move(shared));
  }
}

std::optional<FrameTask> FrameQueue::next_of_shared() {
  if (shared_.empty()) return std::nullopt;
  Shared& first = shared_.front();
  FrameTask task{first.input, first.source, std::nullopt};
  if (!first.source->count()) return task;
  task.page = first.pages[first.next];
  if (++first.next == first.pages.size()) shared_.pop_front();
  return task;
}

void FrameQueue::end(const FrameSource& source) {
  const std::lock_guard lock(mutex_);
  std::erase_if(shared_, [&source](const Shared& one) { return one.source.get() == &source; });
}

}  // namespace kv::polarization
