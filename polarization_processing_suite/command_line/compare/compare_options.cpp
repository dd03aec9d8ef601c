// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include <limits>

#include "command_line/command.h"
#include "command_line/compare/compare_command.h"
#include "command_line/options/values.h"

namespace kv::polarization {
namespace {

CommandPage compare_page() {
  return {
      .name = "compare",
      .summary = "Compare the pixels of two files or folders",
      .details =
          "Of files that differ it tells the first pixel that does, how many do, and the largest "
          "difference. Columns, rows and channels count from 0, pages from 1. Files of folders are "
          "compared by their names in them; those on one side only are named. The journal "
          "`kv-polarize.journal` is left out.\n"
          "\n"
          "Values of pixels are compared, whatever the files' formats and compressions are, and "
          "whatever else they record. Floats are compared by their bits: 0 is not -0, and a NaN "
          "equals one of the same bits. Files that are no images, headerless frames among them, "
          "are compared by their bytes.\n"
          "\n"
          "The exit status is 0 when all is equal, 1 when something differs, and 2 when something "
          "could not be compared.",
      .examples = {"kv-polarize compare frame_dolp.tiff other/frame_dolp.png",
                   "kv-polarize compare planes planes.before --json"}};
}

class CompareCommand : public Command {
 public:
  explicit CompareCommand(CLI::App& app) : Command(app, compare_page()) {
    options().add_argument({.names = "A",
                            .value = "PATH",
                            .summary = "A file or a folder",
                            .required = true,
                            .completion = Completion::file},
                           path_into(options_.left));
    options().add_argument({.names = "B",
                            .value = "PATH",
                            .summary = "What to compare it with",
                            .required = true,
                            .completion = Completion::file},
                           path_into(options_.right));
    options().add({.names = "--tolerance",
                   .value = "N",
                   .summary = "How far apart values may be and count as equal",
                   .details = "In the files' own units. Above 0 all NaNs are equal, and so are 0 "
                              "and -0.",
                   .initial = "0"},
                  number_into(options_.settings.tolerance, 0, std::numeric_limits<float>::max()));
    options().add_flag({.names = "--bytes", .summary = "Compare bytes of files, not pixels"},
                       options_.settings.bytes_only);
    options().add_flag({.names = "--json",
                        .summary = "Tell the result as a JSON object",
                        .details = "Its `files` are those that are not equal."},
                       options_.json);
  }

  int run() override {
    if (options_.settings.bytes_only && options_.settings.tolerance > 0) {
      throw UsageError("--bytes excludes --tolerance; give one of them");
    }
    return run_compare(options_);
  }

 private:
  CompareOptions options_;
};

}  // namespace

std::unique_ptr<Command> make_compare_command(CLI::App& app) {
  return std::make_unique<CompareCommand>(app);
}

}  // namespace kv::polarization
