// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "command_line/command.h"
#include "command_line/options/values.h"
#include "command_line/view/view_command.h"

namespace kv::polarization {
namespace {

CommandPage view_page() {
  return {
      .name = "view",
      .summary = "Show all pictures of a raw frame on one sheet",
      .details =
          "The sheet has intensity, DoLP, ticks along the angle, the angle as hue on black and on "
          "white, with the usual hues and with even ones, S1/S0, S2/S0, and the quality flags, "
          "each beside a legend that tells unit and range. Pictures are reduced by a whole factor "
          "until the sheet is no wider than wanted, and those of small frames enlarged by one.\n"
          "\n"
          "Quality flags name pixels not to believe, with their share of all pixels: clipped ones, "
          "those more polarized than light can be, those without light, and with a calibration bad "
          "pixels and those that were rebuilt from their cell's other three. Once the noise is "
          "known, by a calibration "
          "or --sensor-noise, also those whose DoLP is less than 3 of its standard deviations. A "
          "reduced picture shows a flag of any pixel, so that single ones are seen.",
      .examples = {"kv-polarize view frame.png -o sheet.png --phase 90",
                   "kv-polarize view stack.tiff --page 12 -o sheet.png --calibration camera.json"}};
}

class ViewCommand : public Command {
 public:
  explicit ViewCommand(CLI::App& app) : Command(app, view_page()) {
    options().add_argument({.names = "FRAME",
                            .value = "FILE",
                            .summary = "Raw mosaic frame",
                            .required = true,
                            .completion = Completion::file},
                           path_into(options_.file));
    options().add({.names = "-o,--output",
                   .value = "SHEET",
                   .summary = "The picture to write, whose ending decides on the format",
                   .required = true,
                   .completion = Completion::file},
                  path_into(options_.output));
    options().add_flag({.names = "--overwrite",
                        .summary = "Replace an earlier file of that name",
                        .details = "Never the frame itself."},
                       options_.overwrite);
    options().add({.names = "--page",
                   .value = "N",
                   .summary = "Which frame of the file, from 1 up",
                   .initial = "1"},
                  whole_number_into(options_.page, 1, 1LL << 40));
    options().add({.names = "--sheet-width",
                   .value = "PIXELS",
                   .summary = "How wide the sheet may be, 960 to 16384",
                   .details = "The titles of three pictures alone take some 900 pixels.",
                   .initial = "1600"},
                  whole_number_into(options_.sheet.width, 960, 16384));
    options().add(
        {.names = "--dolp-white",
         .value = "N",
         .summary = "DoLP that pictures show at full brightness",
         .initial = "what one pixel in 100 of the frame exceeds, rounded up to a multiple "
                    "of 0.05"},
        number_into(options_.sheet.dolp_white, 0.01, 1),
        [this] { options_.sheet.dolp_white.reset(); });
  }

  int run() override {
    options_.settings = frames_.value();
    return run_view(options_);
  }

 private:
  FrameOptions frames_{options()};
  ViewOptions options_;
};

}  // namespace

std::unique_ptr<Command> make_view_command(CLI::App& app) {
  return std::make_unique<ViewCommand>(app);
}

}  // namespace kv::polarization
