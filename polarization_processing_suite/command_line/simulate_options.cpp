#include "command_line/commands.h"
#include "command_line/common_options.h"
#include "command_line/simulate_command.h"
#include "kv/image_files/image_format.h"

namespace kv::polarization {
namespace {

std::string writable_endings() {
  std::string endings;
  for (const ImageFormatTraits& traits : image_formats()) {
    if (!traits.available()) continue;
    if (!endings.empty()) endings += ", ";
    endings += ending_of(traits.format);
  }
  return endings;
}

class SimulateCommand : public Command {
 public:
  explicit SimulateCommand(CLI::App& app)
      : Command(*app.add_subcommand("simulate", "Write raw frames of a synthetic scene or sensor")),
        command_(options()) {
    command_.footer(
        "The scene: a glossy sphere on rippled water under a clear sky, its light traced by\n"
        "Fresnel's equations, and four film discs at 0, 45, 90 and 135 degrees, left to right, "
        "with\n"
        "DoLP 0.9, 0.8, 0.7 and 0.6.");
    command_
        .add_option(
            "-o,--output", options_.file,
            "The file to write, or a folder for a stack; the ending decides on the format: " +
                writable_endings())
        ->type_name("FILE")
        ->required();
    command_.add_option("--width", options_.width, "Columns")
        ->type_name("N")
        ->check(kSides)
        ->capture_default_str();
    command_.add_option("--height", options_.height, "Rows")
        ->type_name("N")
        ->check(kSides)
        ->capture_default_str();
    command_.add_option("--bit-depth", options_.camera.bit_depth, "Significant bits of a sample")
        ->type_name("N")
        ->check(CLI::Range(1, 16))
        ->capture_default_str();
    add_phase(command_, options_.phase_degrees);
    command_.add_option("--seed", options_.camera.seed, "Start of the noise")
        ->type_name("N")
        ->capture_default_str();
    command_
        .add_option("--sensor", options_.scatter,
                    "A sensor whose pixels differ: 1 as those of real ones do, by 1.5 per cent in "
                    "gain and 1 degree; it has a black level, too (default: an ideal one)")
        ->type_name("SCATTER")
        ->check(CLI::Range(0.0, 5.0));
    command_.add_option("--bad-pixels", options_.bad_share, "Share of that sensor's pixels")
        ->type_name("SHARE")
        ->check(CLI::Range(0.0, 0.2));
    command_.add_flag("--calibration-stack", options_.calibration_stack,
                      "Write frames to calibrate the sensor with, in the folder of -o: 36 behind a "
                      "polarizer, 8 darks, 8 flats, stack.csv that names them, and the truth");
    command_.add_flag("--noise,!--no-noise", options_.camera.noise,
                      "With shot noise and read noise (default), or without");
    command_.final_callback([this] {
      if (options_.scatter && (options_.width % 2 != 0 || options_.height % 2 != 0)) {
        throw CLI::ValidationError("--sensor", "the sides must be even: sensors have whole cells");
      }
    });
  }

  int run() override {
    options_.camera.phase = phase_at(options_.phase_degrees).value();
    if (options_.calibration_stack && !options_.scatter) options_.scatter = 1;
    return run_simulate(options_);
  }

 private:
  CLI::App& command_;
  SimulateOptions options_;
};

}  // namespace

std::unique_ptr<Command> make_simulate_command(CLI::App& app) {
  return std::make_unique<SimulateCommand>(app);
}

}  // namespace kv::polarization
