// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include <CLI/CLI.hpp>
#include <algorithm>
#include <iostream>

#include "command_line/exit_status.h"
#include "command_line/options/values.h"
#include "command_line/reference/completion.h"

namespace kv::polarization {
namespace {

struct Shell {
  std::string_view name;
  std::string (*completion)(const Commands& commands);
};

const Shell kShells[] = {
    {"bash", bash_completion}, {"zsh", zsh_completion}, {"fish", fish_completion}};

std::vector<std::string> shell_names() {
  std::vector<std::string> names;
  for (const Shell& shell : kShells) names.emplace_back(shell.name);
  return names;
}

CommandPage completion_page() {
  return {.name = "completion",
          .summary = "Print a script that completes command lines in a shell",
          .details =
              "An installed tool has these scripts in their places. Without, a shell takes "
              "them by a line in its start-up file:\n"
              "\n"
              "    source <(kv-polarize completion bash)    in ~/.bashrc\n"
              "    source <(kv-polarize completion zsh)     in ~/.zshrc, behind compinit\n"
              "    kv-polarize completion fish | source     in ~/.config/fish/config.fish",
          .examples = {"kv-polarize completion bash > kv-polarize.bash"}};
}

class CompletionCommand : public Command {
 public:
  explicit CompletionCommand(CLI::App& app) : Command(app, completion_page()) {
    options().add_argument(
        {.names = "SHELL", .summary = "The shell", .choices = shell_names(), .required = true},
        [this](const std::string& name) { shell_ = choice_of(name, shell_names()); });
  }

  int run() override {
    CLI::App app;
    std::cout << std::ranges::find(kShells, shell_, &Shell::name)->completion(make_commands(app))
              << std::flush;
    return exit_success;
  }

 private:
  std::string shell_;
};

}  // namespace

std::vector<std::string> words_for(const OptionRecord& record, const Commands& commands) {
  if (record.completion != Completion::command) return record.choices;
  std::vector<std::string> names;
  for (const auto& command : commands) names.push_back(command->page().name);
  return names;
}

std::vector<OptionRecord> all_records(const Command& command) {
  std::vector<OptionRecord> records = command.options().records();
  records.push_back(help_record());
  return records;
}

std::unique_ptr<Command> make_completion_command(CLI::App& app) {
  return std::make_unique<CompletionCommand>(app);
}

}  // namespace kv::polarization
