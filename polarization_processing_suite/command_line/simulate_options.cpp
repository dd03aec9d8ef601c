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
      : Command(*app.add_subcommand("simulate", "Write a raw frame of a synthetic scene")),
        command_(options()) {
    command_.footer(
        "The scene: a glossy sphere on rippled water under a clear sky, its light traced by\n"
        "Fresnel's equations, and four film discs at 0, 45, 90 and 135 degrees, left to right, "
        "with\n"
        "DoLP 0.9, 0.8, 0.7 and 0.6.");
    command_
        .add_option("-o,--output", options_.file,
                    "The file to write; its ending decides on the format: " + writable_endings())
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
    command_.add_flag("--noise,!--no-noise", options_.camera.noise,
                      "With shot noise and read noise (default), or without");
  }

  int run() override {
    options_.camera.phase = phase_at(options_.phase_degrees).value();
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
