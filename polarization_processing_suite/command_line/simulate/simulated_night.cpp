// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "command_line/simulate/simulated_night.h"

#include <algorithm>
#include <atomic>
#include <string>
#include <vector>

#include "command_line/frames/all_cores.h"
#include "command_line/simulate/simulated_frame.h"
#include "kv/image_files/image_writer.h"
#include "kv/image_files/stack_writer.h"
#include "platform/process.h"

namespace kv::polarization {
namespace {

constexpr std::size_t kLeastDigits = 4;

/// Simulated side by side before they are written into one file.
constexpr std::size_t kFramesOfBatch = 16;

std::string file_name(std::size_t number, std::size_t frames, ImageFormat format) {
  const std::string digits = std::to_string(number + 1);
  const std::size_t width = std::max(kLeastDigits, std::to_string(frames).size());
  return "frame_" + std::string(width - digits.size(), '0') + digits +
         std::string(ending_of(format));
}

std::size_t write_file(const FrameSimulator& simulator, const SimulateOptions& options) {
  const std::size_t frames = options.frames.value();
  PendingFile file(options.file);
  const auto stack = open_stack(file, options.format, frames);
  std::vector<Frame> batch(kFramesOfBatch);
  for (std::size_t first = 0; first < frames; first += kFramesOfBatch) {
    batch.resize(std::min(kFramesOfBatch, frames - first));
    for_each_index(batch.size(), [&](std::size_t i) { batch[i] = simulator.take(first + i); });
    if (platform::interrupted()) return 0;
    for (const Frame& frame : batch) stack->add(grey_image(frame));
  }
  stack->finish();
  file.close();
  file.publish();
  return frames;
}

std::size_t write_folder(const FrameSimulator& simulator, const SimulateOptions& options) {
  make_folder(options.file);
  std::atomic<std::size_t> written = 0;
  const std::size_t frames = options.frames.value();
  for_each_index(frames, [&](std::size_t number) {
    save_image(options.file / file_name(number, frames, options.format),
               grey_image(simulator.take(number)));
    ++written;
  });
  return written;
}

}  // namespace

std::size_t write_night(const SimulateOptions& options) {
  const FrameSimulator simulator(options);
  return options.in_one_file ? write_file(simulator, options) : write_folder(simulator, options);
}

}  // namespace kv::polarization
