// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "command_line/run_tool.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <iostream>
#include <new>

#include "command_line/command.h"
#include "command_line/exit_status.h"
#include "command_line/habits.h"
#include "command_line/messages.h"
#include "command_line/options/help_text.h"
#include "command_line/options/values.h"
#include "command_line/tool_page.h"
#include "command_line/version_text.h"

namespace kv::polarization {
namespace {

/// Where there is no memory for the line, the status tells.
int refuse(const char* line) noexcept {
  try {
    complain(line);
  } catch (const std::bad_alloc&) {
  }
  return exit_nothing_done;
}

int run(const Commands& commands) {
  for (const auto& command : commands) {
    if (command->chosen()) return command->run();
  }
  return refuse("there is no command; see kv-polarize --help");
}

}  // namespace

int run_tool(std::vector<std::string> arguments) {
  try {
    CLI::App app("", kProgram);
    app.set_version_flag("--version", version_text(this_build()));
    app.require_subcommand(0, 1);
    const Commands commands = make_commands(app);
    app.formatter_fn([&commands](const CLI::App*, const std::string&, CLI::AppFormatMode) {
      return tool_help(commands);
    });
    if (const auto values = asked_values(commands, arguments)) {
      std::cout << *values << std::flush;
      return exit_success;
    }
    try {
      check_command_name(commands, arguments);
      std::ranges::reverse(arguments);  // the parser takes them from the end
      app.parse(arguments);
    } catch (const CLI::ParseError& error) {
      if (error.get_exit_code() == 0) return app.exit(error);
      return refuse((std::string(error.what()) + "; see kv-polarize --help").c_str());
    }
    return run(commands);
  } catch (const std::bad_alloc&) {
    return refuse("there is not enough memory; close other programs or use a smaller frame");
  } catch (const std::exception& error) {
    return refuse(error.what());
  }
}

}  // namespace kv::polarization
