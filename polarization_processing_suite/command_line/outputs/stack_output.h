// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>

#include "command_line/outputs/frame_output.h"
#include "kv/image_files/stack_writer.h"

namespace kv::polarization {

/// A file of many images. Several threads make them; they are written in their order.
class StackOutput {
 public:
  StackOutput(const std::filesystem::path& path, ImageFormat format, std::size_t images,
              const WriteOptions& options);

  /// Waits until all images before that place are written, and then lets the work add its image.
  /// The places are handed out in their order, so that the wait comes to an end. False when the
  /// stack was given up. Gives up, and throws on, when the work throws.
  bool add(std::size_t place, const std::function<void(StackWriter&)>& work);

  /// For an image that cannot be made: nothing is written further, and nobody waits.
  void give_up();

  /// After the last image: completes the file and gives it its name.
  void publish(Publishing publishing);

  const std::filesystem::path& path() const { return file_.target(); }

 private:
  std::mutex mutex_;
  std::condition_variable turn_;
  PendingFile file_;
  std::unique_ptr<StackWriter> writer_;
  std::size_t next_ = 0;
  bool given_up_ = false;
};

}  // namespace kv::polarization
