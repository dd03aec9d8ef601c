// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "command_line/again/again_command.h"
#include "command_line/command.h"
#include "command_line/options/values.h"
#include "command_line/path_text.h"

namespace kv::polarization {
namespace {

CommandPage again_page() {
  return {.name = "again",
          .summary = "Make a result once more, and compare",
          .details =
              "Every result of transform records how it was made: the version, the command, the "
              "input and its hash, the calibration and its hash, and the processor. This command "
              "runs that command once more, in a passing folder, and compares the bytes.\n"
              "\n"
              "The low bits of some planes depend on the processor's approximate reciprocals, "
              "which differ between makers; the command says when they do.\n"
              "\n"
              "Exit status: 0 the same bytes; 1 the result differs; 2 it could not be made.",
          .examples = {"kv-polarize again planes/frame_dolp.png",
                       "kv-polarize again planes/frame_dolp.png --from /data/night"}};
}

class AgainCommand : public Command {
 public:
  explicit AgainCommand(CLI::App& app) : Command(app, again_page()) {
    options().add_arguments({.names = "RESULT",
                             .value = "FILE",
                             .summary = "A file that transform has written",
                             .required = true,
                             .completion = Completion::file},
                            results_, 1, 1);
    options().add({.names = "--from",
                   .value = "FOLDER",
                   .summary = "The folder that recorded names are relative to",
                   .initial = "the current one",
                   .completion = Completion::folder},
                  path_into(options_.from), [this] { options_.from.reset(); });
  }

  int run() override {
    options_.result = path_of(results_.front());
    return run_again(options_);
  }

 private:
  std::vector<std::string> results_;
  AgainOptions options_;
};

}  // namespace

std::unique_ptr<Command> make_again_command(CLI::App& app) {
  return std::make_unique<AgainCommand>(app);
}

}  // namespace kv::polarization
