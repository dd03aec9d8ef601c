// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include <limits>

#include "command_line/command.h"
#include "command_line/options/common_options.h"
#include "command_line/options/values.h"
#include "command_line/simulate/simulate_command.h"
#include "kv/image_files/image_format.h"

namespace kv::polarization {
namespace {

CommandPage simulate_page() {
  return {.name = "simulate",
          .summary = "Write raw frames of a synthetic scene or sensor",
          .details =
              "The scene: a glossy sphere on rippled water under a clear sky, its light traced by "
              "Fresnel's equations, and four film discs at 0, 45, 90 and 135 degrees, left to "
              "right, with DoLP 0.9, 0.8, 0.7 and 0.6.\n"
              "\n"
              "Earlier files of the same names are replaced.",
          .examples = {"kv-polarize simulate -o frame.png",
                       "kv-polarize simulate --frames 2000 --width 256 --height 192 -o night",
                       "kv-polarize simulate --calibration-stack -o stack"}};
}

std::vector<std::string> writable_formats() {
  std::vector<std::string> names;
  for (const ImageFormatTraits& traits : image_formats()) {
    if (traits.writes(ImageKind::grey)) names.emplace_back(traits.name);
  }
  return names;
}

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
  explicit SimulateCommand(CLI::App& app) : Command(app, simulate_page()) {
    options().add({.names = "-o,--output",
                   .value = "FILE",
                   .summary = "The file to write, whose ending decides on the format, or a folder "
                              "for several frames",
                   .details = "Endings are " + writable_endings() + ".",
                   .required = true,
                   .completion = Completion::file},
                  path_into(options_.file));
    add_frame();
    add_frames();
    add_sensor();
  }

  int run() override {
    if (options_.frames && options_.calibration_stack) {
      throw UsageError("--frames excludes --calibration-stack, whose frames are counted");
    }
    if (options().given("format") && !options_.frames) {
      throw UsageError("--format is of --frames; the ending of -o decides on that of a single one");
    }
    if (options_.scatter && (options_.width % 2 != 0 || options_.height % 2 != 0)) {
      throw UsageError("--sensor: the sides must be even, as sensors have whole cells");
    }
    options_.camera.phase = phase_at(options_.phase_degrees).value();
    if (options_.calibration_stack && !options_.scatter) options_.scatter = 1;
    if (options_.frames) choose_file_or_folder();
    return run_simulate(options_);
  }

 private:
  void add_frame() {
    options().add({.names = "--width", .value = "N", .summary = "Columns", .initial = "1224"},
                  whole_number_into(options_.width, 2, kLongestSide));
    options().add({.names = "--height", .value = "N", .summary = "Rows", .initial = "1024"},
                  whole_number_into(options_.height, 2, kLongestSide));
    options().add({.names = "--bit-depth",
                   .value = "N",
                   .summary = "Significant bits of a sample, 1 to 16",
                   .initial = "16"},
                  whole_number_into(options_.camera.bit_depth, 1, 16));
    add_phase(options(), options_.phase_degrees);
    options().add(
        {.names = "--seed",
         .value = "N",
         .summary = "Start of the noise: the same one makes the same frame",
         .initial = "1"},
        whole_number_into(options_.camera.seed, 0, std::numeric_limits<long long>::max()));
    options().add_flag({.names = "--noise", .summary = "With shot noise and read noise (default)"},
                       options_.camera.noise);
  }

  /// Several frames go into one file when -o has the ending of a format, and is no folder.
  void choose_file_or_folder() {
    const std::string ending = options_.file.extension().string();
    const auto format = ending.empty() ? std::nullopt : format_named(ending);
    options_.in_one_file = format && !std::filesystem::is_directory(options_.file);
    if (!options_.in_one_file) return;
    if (options().given("format")) {
      throw UsageError("--format is of frames in a folder; the ending of -o decides on that of " +
                       options_.file.string());
    }
    options_.format = *format;
  }

  void add_frames() {
    options().add({.names = "--frames",
                   .value = "N",
                   .summary = "Write so many frames of the scene, into one file or a folder",
                   .details = "Where -o ends like a format that takes several frames, they become "
                              "the pages of that file; else it is a folder, which is made if "
                              "missing, for frame_0001.tiff and so on. They differ in their noise: "
                              "each has the seed that follows the one before, so that the first is "
                              "what a single frame would be.",
                   .initial = "a single one, in the file of -o"},
                  whole_number_into(options_.frames, 1, 99'999'999),
                  [this] { options_.frames.reset(); });
    options().add({.names = "--format",
                   .value = "NAME",
                   .summary = "File format of the frames of --frames in a folder",
                   .choices = writable_formats(),
                   .initial = std::string(traits_of(options_.format).name)},
                  [this](const std::string& name) {
                    options_.format = format_named(choice_of(name, writable_formats())).value();
                  });
  }

  void add_sensor() {
    options().add(
        {.names = "--sensor",
         .value = "SCATTER",
         .summary = "A sensor whose pixels differ: 1 as those of real ones do",
         .details = "At 1 they differ by 1.5 per cent in gain and by 1 degree; the sensor has a "
                    "black level, too. Without it the sensor is an ideal one."},
        number_into(options_.scatter, 0, 5), [this] { options_.scatter.reset(); });
    options().add({.names = "--bad-pixels",
                   .value = "SHARE",
                   .summary = "Share of that sensor's pixels",
                   .initial = "0"},
                  number_into(options_.bad_share, 0, 0.2));
    options().add_flag(
        {.names = "--calibration-stack",
         .summary = "Write frames to calibrate the sensor with, in the folder of -o",
         .details =
             "36 frames behind a polarizer, 8 darks, 8 flats, stack.csv that names them, and "
             "the truth."},
        options_.calibration_stack);
  }

  SimulateOptions options_;
};

}  // namespace

std::unique_ptr<Command> make_simulate_command(CLI::App& app) {
  return std::make_unique<SimulateCommand>(app);
}

}  // namespace kv::polarization
