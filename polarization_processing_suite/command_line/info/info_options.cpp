// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include <limits>

#include "command_line/command.h"
#include "command_line/info/info_command.h"
#include "command_line/options/common_options.h"
#include "command_line/options/values.h"

namespace kv::polarization {
namespace {

CommandPage info_page() {
  return {
      .name = "info",
      .summary = "Tell what files hold, or what tool and library find on this machine",
      .details =
          "Of each file: format, size, pages, bit depth, the bits that its samples use, least, "
          "mean "
          "and greatest sample of the four classes of pixels, samples at full scale, and what is "
          "odd about it. Of a headerless file, without its shape, the shapes of common sensors "
          "that its size would explain: the smoothest picture first, as samples that are unpacked "
          "or cut into rows in the wrong way make a rough one.\n"
          "\n"
          "The redundancy compares the sums along the two diagonals of the cells, top left and "
          "bottom right less the two others. Polarizers at right angles lie on the diagonals, so "
          "that I0 + I90 = I45 + I135 in even light, for any phase. The mean difference shows "
          "unequal gains of the classes, its scatter edges and noise. It does not tell the phase; "
          "the command identify does.\n"
          "\n"
          "Without a file: version, the library that was loaded, the processor and the code that "
          "the library uses on it, the logger, and the formats of this build.",
      .examples = {"kv-polarize info", "kv-polarize info frame.tiff --phase 90",
                   "kv-polarize info dump.raw",
                   "kv-polarize info night/*.tiff --json > night.json"}};
}

class InfoCommand : public Command {
 public:
  explicit InfoCommand(CLI::App& app) : Command(app, info_page()) {
    options().add_arguments({.names = "FRAME",
                             .value = "FILE",
                             .summary = "Files of raw frames; none to look at the machine",
                             .completion = Completion::file},
                            files_, 0, 1 << 30);
    options().add({.names = "--page",
                   .value = "N",
                   .summary = "The page of each file to look at, from 1 up",
                   .details = "Long files are looked at a page at a time, as reading all of them "
                              "would take as long as transforming them.",
                   .initial = "1"},
                  whole_number_into(page_, 1, std::numeric_limits<int>::max()));
    add_bit_depth(options(), options_.question.bit_depth);
    options().add_flag({.names = "--json",
                        .summary = "Print one JSON object",
                        .details = "What is not known is null in it. Shares are fractions of 1."},
                       options_.json);
  }

  int run() override {
    options_.files.assign(files_.begin(), files_.end());
    options_.question.page = page_ - 1;
    options_.question.raw_shape = raw_shape_.value();
    if (mosaic_.given()) options_.question.mosaic = mosaic_.value();
    return run_info(options_);
  }

 private:
  MosaicOptions mosaic_{options()};
  RawShapeOptions raw_shape_{options()};
  InfoOptions options_;
  std::vector<std::string> files_;
  std::size_t page_ = 1;
};

}  // namespace

std::unique_ptr<Command> make_info_command(CLI::App& app) {
  return std::make_unique<InfoCommand>(app);
}

}  // namespace kv::polarization
