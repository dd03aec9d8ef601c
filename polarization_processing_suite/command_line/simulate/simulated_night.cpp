#include "command_line/simulate/simulated_night.h"

#include <algorithm>
#include <atomic>
#include <string>

#include "command_line/frames/all_cores.h"
#include "command_line/simulate/simulated_frame.h"
#include "kv/image_files/image_writer.h"

namespace kv::polarization {
namespace {

constexpr std::size_t kLeastDigits = 4;

std::string file_name(std::size_t number, std::size_t frames, ImageFormat format) {
  const std::string digits = std::to_string(number + 1);
  const std::size_t width = std::max(kLeastDigits, std::to_string(frames).size());
  return "frame_" + std::string(width - digits.size(), '0') + digits +
         std::string(ending_of(format));
}

}  // namespace

std::size_t write_night(const SimulateOptions& options) {
  make_folder(options.file);
  const FrameSimulator simulator(options);
  std::atomic<std::size_t> written = 0;
  const std::size_t frames = options.frames.value();
  for_each_index(frames, [&](std::size_t number) {
    save_image(options.file / file_name(number, frames, options.format),
               grey_image(simulator.take(number)));
    ++written;
  });
  return written;
}

}  // namespace kv::polarization
