#include "command_line/simulate/simulate_command.h"

#include <iostream>
#include <string>

#include "command_line/exit_status.h"
#include "command_line/simulate/simulated_stack.h"
#include "kv/image_files/image_writer.h"

namespace kv::polarization {
namespace {

/// The arguments that make transform read the frame: what the file itself does not record.
std::string transform_arguments(const SimulateOptions& options, ImageFormat format) {
  std::string arguments = options.file.string() + " -o planes";
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

Frame frame_of(const SimulateOptions& options) {
  const Scene scene(options.width, options.height);
  if (!options.scatter) return photograph(scene, options.width, options.height, options.camera);
  return sensor_of(options).take(
      [&scene](double column, double row) { return scene.at(column, row); }, 0);
}

}  // namespace

int run_simulate(const SimulateOptions& options) {
  if (options.calibration_stack) {
    const WrittenStack stack = write_calibration_stack(options);
    std::cout << stack.frames << " frames of " << options.width << " x " << options.height
              << " pixels, and what the sensor truly is, in " << options.file.string()
              << "; next: kv-polarize calibrate --manifest " << stack.manifest.string()
              << (options.phase_degrees != 0 ? " --phase " + std::to_string(options.phase_degrees)
                                             : "")
              << " -o camera.json" << std::endl;
    return exit_success;
  }
  const Frame frame = frame_of(options);
  save_image(options.file, grey_image(frame));
  std::cout << "frame of " << options.width << " x " << options.height << " pixels with "
            << frame.bit_depth << " bits in " << options.file.string()
            << "; next: kv-polarize transform "
            << transform_arguments(options, format_for(options.file)) << std::endl;
  return exit_success;
}

}  // namespace kv::polarization
