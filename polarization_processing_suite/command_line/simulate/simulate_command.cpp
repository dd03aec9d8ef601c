// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "command_line/simulate/simulate_command.h"

#include <iostream>
#include <string>

#include "command_line/exit_status.h"
#include "command_line/messages.h"
#include "command_line/simulate/simulated_frame.h"
#include "command_line/simulate/simulated_night.h"
#include "command_line/simulate/simulated_stack.h"
#include "kv/image_files/image_writer.h"
#include "platform/process.h"

namespace kv::polarization {
namespace {

/// The arguments that make transform read frames: what the files themselves do not record.
std::string transform_arguments(const SimulateOptions& options, const std::string& files,
                                ImageFormat format) {
  std::string arguments = files + " -o planes";
  const int depth = options.camera.bit_depth;
  if (options.phase_degrees != 0) arguments += " --phase " + std::to_string(options.phase_degrees);
  const bool depth_is_in_file =
      format == ImageFormat::tiff || format == ImageFormat::pgm || depth == 8 || depth == 16;
  if (!depth_is_in_file) arguments += " --bit-depth " + std::to_string(depth);
  if (format == ImageFormat::raw) {
    arguments += " --width " + std::to_string(options.width) + " --height " +
                 std::to_string(options.height) + " --raw-bits " + (depth > 8 ? "16" : "8");
  }
  return arguments;
}

std::string frame_text(const SimulateOptions& options) {
  return " of " + std::to_string(options.width) + " x " + std::to_string(options.height) +
         " pixels";
}

int simulate_stack(const SimulateOptions& options) {
  const WrittenStack stack = write_calibration_stack(options);
  std::cout << stack.frames << " frames" << frame_text(options)
            << ", and what the sensor truly is, in " << printable(options.file)
            << "; next: kv-polarize calibrate --manifest " << printable(stack.manifest)
            << (options.phase_degrees != 0 ? " --phase " + std::to_string(options.phase_degrees)
                                           : "")
            << " -o camera.json" << std::endl;
  return exit_success;
}

int simulate_night(const SimulateOptions& options) {
  const std::size_t frames = write_night(options);
  if (frames == 0) return exit_interrupted;
  const std::filesystem::path files =
      options.in_one_file ? options.file
                          : options.file / ("*" + std::string(ending_of(options.format)));
  std::cout << frames << (frames == 1 ? " frame" : " frames") << frame_text(options) << " with "
            << options.camera.bit_depth << " bits in " << printable(options.file)
            << "; next: kv-polarize transform "
            << transform_arguments(options, files.string(), options.format) << std::endl;
  return platform::interrupted() ? exit_interrupted : exit_success;
}

int simulate_frame(const SimulateOptions& options) {
  const ImageFormat format = format_for(options.file);
  const FrameSimulator simulator(options);
  if (platform::interrupted()) return exit_interrupted;
  save_image(options.file, grey_image(simulator.take(0)));
  std::cout << "frame" << frame_text(options) << " with " << options.camera.bit_depth << " bits in "
            << printable(options.file) << "; next: kv-polarize transform "
            << transform_arguments(options, options.file.string(), format) << std::endl;
  return exit_success;
}

}  // namespace

int run_simulate(const SimulateOptions& options) {
  if (options.calibration_stack) return simulate_stack(options);
  return options.frames ? simulate_night(options) : simulate_frame(options);
}

}  // namespace kv::polarization
