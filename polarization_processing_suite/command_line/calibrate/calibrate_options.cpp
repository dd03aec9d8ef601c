// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "command_line/calibrate/calibrate_command.h"
#include "command_line/command.h"
#include "command_line/options/common_options.h"
#include "command_line/options/values.h"

namespace kv::polarization {
namespace {

CommandPage calibrate_page() {
  return {
      .name = "calibrate",
      .summary = "Find what a sensor is from frames of known light",
      .details =
          "The manifest is a text of comma-separated values, a line for each file of frames:\n"
          "\n"
          "    file,kind,angle\n"
          "    film_000.tiff,polarized,0\n"
          "    film_005.tiff,polarized,5\n"
          "    dark.tiff,dark,\n"
          "    flat.tiff,flat,\n"
          "\n"
          "polarized: a uniform source behind a linear polarizer at that angle, in degrees, 0 "
          "along "
          "the image's rows and counter-clockwise as seen in the image. dark: no light, same "
          "exposure. flat: the source without a polarizer. Paths are relative to the manifest.\n"
          "\n"
          "The report, a page for any browser, tells whether the calibration is good.",
      .examples = {"kv-polarize calibrate --manifest stack.csv -o camera.json",
                   "kv-polarize calibrate --manifest stack.csv --phase 90 --unknown-angles -o "
                   "camera.json"}};
}

class CalibrateCommand : public Command {
 public:
  explicit CalibrateCommand(CLI::App& app) : Command(app, calibrate_page()) {
    add_files();
    add_bit_depth(options(), options_.bit_depth);
    add_fit();
    options().add({.names = "--camera",
                   .value = "TEXT",
                   .summary = "Model and serial number, for the record"},
                  text_into(options_.camera));
    options().add({.names = "--date",
                   .value = "TEXT",
                   .summary = "When the frames were taken, for the record"},
                  text_into(options_.date));
  }

  int run() override {
    options_.fit.mosaic = mosaic_.value();
    options_.raw_shape = raw_shape_.value();
    options_.fit.angles_known = !unknown_angles_;
    return run_calibrate(options_);
  }

 private:
  void add_files() {
    options().add({.names = "--manifest",
                   .value = "FILE",
                   .summary = "The list of the frames",
                   .required = true,
                   .completion = Completion::file},
                  path_into(options_.manifest));
    options().add({.names = "-o,--output",
                   .value = "FILE",
                   .summary = "The calibration to write: NAME.json, maps beside it",
                   .required = true,
                   .completion = Completion::file},
                  path_into(options_.file));
    options().add({.names = "--report",
                   .value = "FILE",
                   .summary = "The report to write",
                   .initial = "NAME.html",
                   .completion = Completion::file},
                  path_into(options_.report));
  }

  void add_fit() {
    options().add({.names = "--clip-level",
                   .value = "N",
                   .summary = "Sample from which on a pixel counts as clipped",
                   .initial = "the greatest one"},
                  whole_number_into(options_.fit.clip_level, 1, 65535),
                  [this] { options_.fit.clip_level.reset(); });
    options().add({.names = "--black-level",
                   .value = "N",
                   .summary = "Counts of all pixels in the dark, for stacks without dark frames",
                   .initial = "0"},
                  number_into(options_.fit.black_level, 0, 65535));
    options().add({.names = "--source-dolp",
                   .value = "N",
                   .summary = "Degree of polarization of the light behind the polarizer",
                   .initial = "1"},
                  number_into(options_.fit.source_dolp, 0.5, 1));
    options().add_flag(
        {.names = "--unknown-angles",
         .summary = "Believe the first polarized frame's angle alone, and find the others"},
        unknown_angles_);
  }

  MosaicOptions mosaic_{options()};
  RawShapeOptions raw_shape_{options()};
  CalibrateOptions options_;
  bool unknown_angles_ = false;
};

}  // namespace

std::unique_ptr<Command> make_calibrate_command(CLI::App& app) {
  return std::make_unique<CalibrateCommand>(app);
}

}  // namespace kv::polarization
