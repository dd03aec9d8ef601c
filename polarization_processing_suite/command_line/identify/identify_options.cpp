// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include <algorithm>
#include <vector>

#include "command_line/command.h"
#include "command_line/identify/identify_command.h"
#include "command_line/options/common_options.h"
#include "command_line/options/values.h"

namespace kv::polarization {
namespace {

CommandPage identify_page() {
  return {
      .name = "identify",
      .summary = "Find how the polarizers lie, from turned light",
      .details =
          "One frame cannot tell how the polarizers lie: the redundancy of its cells holds for all "
          "phases alike. A polarizing film, or a screen, that is turned between two frames by a "
          "known angle tells the sense, which leaves two phases that differ by 90 degrees; with "
          "the known angle of its light in the first frame, by --angle, it tells the phase. Turn "
          "by some 45 degrees.\n"
          "\n"
          "Exit status 1 says that nothing could be told.",
      .examples = {"kv-polarize identify before.tiff after.tiff --turned 45 --angle 0"}};
}

class IdentifyCommand : public Command {
 public:
  explicit IdentifyCommand(CLI::App& app) : Command(app, identify_page()) {
    options().add_arguments({.names = "FRAME",
                             .value = "FILE",
                             .summary = "A frame before and one after the turn",
                             .required = true,
                             .completion = Completion::file},
                            files_, 2, 2);
    options().add({.names = "--turned",
                   .value = "DEGREES",
                   .summary = "By how much the light was turned, counter-clockwise in the image",
                   .required = true},
                  number_into(options_.light.turn, -360, 360));
    options().add(
        {.names = "--angle",
         .value = "DEGREES",
         .summary = "Angle of the light in the first frame: 0 along the rows, counter-clockwise"},
        number_into(options_.light.angle_of_first, -360, 360),
        [this] { options_.light.angle_of_first.reset(); });
    options().add({.names = "--angle-error",
                   .value = "DEGREES",
                   .summary = "Standard deviation of these angles",
                   .initial = "3"},
                  number_into(options_.light.angle_error, 0.01, 45));
    options().add_flag(
        {.names = "--not-mirrored", .summary = "The image is known not to be mirrored"},
        not_mirrored_);
    options().add({.names = "--region",
                   .value = "X,Y,W,H",
                   .summary = "Column, row, width and height of where the light is"},
                  [this](const std::string& text) { options_.light.region = rectangle_of(text); });
    options().add({.names = "--black-level",
                   .value = "N",
                   .summary = "Counts of a pixel in the dark",
                   .initial = "0"},
                  number_into(options_.light.black_level, 0, 65535));
    add_bit_depth(options(), options_.bit_depth);
  }

  int run() override {
    std::ranges::copy(files_, options_.files.begin());
    options_.raw_shape = raw_shape_.value();
    options_.light.may_be_mirrored = !not_mirrored_;
    return run_identify(options_);
  }

 private:
  RawShapeOptions raw_shape_{options()};
  IdentifyOptions options_;
  std::vector<std::string> files_;
  bool not_mirrored_ = false;
};

}  // namespace

std::unique_ptr<Command> make_identify_command(CLI::App& app) {
  return std::make_unique<IdentifyCommand>(app);
}

}  // namespace kv::polarization
