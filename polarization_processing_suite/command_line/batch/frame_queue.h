// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

#include "command_line/batch/frame_source.h"

namespace kv::polarization {

/// A frame that a worker is to read.
struct FrameTask {
  std::size_t input;
  std::shared_ptr<FrameSource> source;
  std::optional<std::size_t> page;  ///< none for whatever comes next through a pipe
};

/// Hands out the frames of all inputs, in their order, to any number of workers. Files are opened
/// by the workers that ask, side by side; a file of many frames is shared among them.
class FrameQueue {
 public:
  /// Opens an input; null when there is nothing to do with it.
  using Open = std::function<std::shared_ptr<FrameSource>(std::size_t input)>;

  /// The pages of an input that are wanted, from 0 up, at least one. Not asked for pipes.
  using Pages = std::function<std::vector<std::size_t>(std::size_t input)>;

  FrameQueue(std::size_t inputs, Open open, Pages pages);

  /// None when all frames were handed out.
  std::optional<FrameTask> next();

  /// A pipe has come to its end.
  void end(const FrameSource& source);

 private:
  struct Shared {
    std::size_t input;
    std::shared_ptr<FrameSource> source;
    std::vector<std::size_t> pages;
    std::size_t next = 0;  ///< of the pages
  };

  std::optional<FrameTask> next_of_shared();

  std::mutex mutex_;
  std::size_t inputs_;
  std::size_t next_input_ = 0;
  Open open_;
  Pages pages_;
  std::deque<Shared> shared_;
};

}  // namespace kv::polarization
