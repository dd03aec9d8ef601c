// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <memory>
#include <vector>

#include "command_line/options/help_text.h"
#include "command_line/options/option_list.h"

namespace kv::polarization {

/// A command of the tool: its page, its options, and what it does.
class Command {
 public:
  Command(CLI::App& app, CommandPage page);
  virtual ~Command() = default;
  Command(const Command&) = delete;
  Command& operator=(const Command&) = delete;

  /// Whether the command line names it.
  bool chosen() const;
  const CommandPage& page() const { return page_; }
  const OptionList& options() const { return options_; }

  /// Does the work of the options as they were parsed. Returns an exit status. Throws UsageError
  /// for options that do not go together, and what the work throws before any of it is done.
  virtual int run() = 0;

 protected:
  OptionList& options() { return options_; }

 private:
  CommandPage page_;
  CLI::App& command_;
  OptionList options_;
};

using Commands = std::vector<std::unique_ptr<Command>>;

/// All commands of the tool, in the order of its help. The application must outlive them.
Commands make_commands(CLI::App& app);

// Each adds its command to the application.
std::unique_ptr<Command> make_transform_command(CLI::App& app);
std::unique_ptr<Command> make_measure_command(CLI::App& app);
std::unique_ptr<Command> make_view_command(CLI::App& app);
std::unique_ptr<Command> make_info_command(CLI::App& app);
std::unique_ptr<Command> make_bench_command(CLI::App& app);
std::unique_ptr<Command> make_again_command(CLI::App& app);
std::unique_ptr<Command> make_simulate_command(CLI::App& app);
std::unique_ptr<Command> make_calibrate_command(CLI::App& app);
std::unique_ptr<Command> make_identify_command(CLI::App& app);
std::unique_ptr<Command> make_compare_command(CLI::App& app);
std::unique_ptr<Command> make_manual_command(CLI::App& app);
std::unique_ptr<Command> make_completion_command(CLI::App& app);

}  // namespace kv::polarization
