#include <CLI/CLI.hpp>
#include <iostream>
#include <new>
#include <string>
#include <vector>

#include "command_line/command.h"
#include "command_line/exit_status.h"
#include "command_line/habits.h"
#include "command_line/messages.h"
#include "command_line/options/values.h"
#include "platform/process.h"

using namespace kv::polarization;

namespace {

constexpr const char* kDescription =
    "Turns raw frames of polarization cameras into Stokes, angle and degree-of-polarization "
    "planes.";

constexpr const char* kFooter =
    "kv-polarize COMMAND --help tells the options of a command.\n"
    "\n"
    "Exit status: 0 all went well; 1 some of the work failed; 2 the command line is wrong, or\n"
    "nothing could be done; 130 stopped by Ctrl-C.";

int refuse(const std::string& line) {
  complain(line);
  return exit_nothing_done;
}

int run(const Commands& commands) {
  for (const auto& command : commands) {
    if (command->chosen()) return command->run();
  }
  return refuse("there is no command; see kv-polarize --help");
}

}  // namespace

int main(int argc, char** argv) {
  kv::platform::defer_interrupts();
  kv::platform::ignore_file_size_signal();
  try {
    CLI::App app(kDescription, "kv-polarize");
    app.footer(kFooter);
    app.set_version_flag("--version", "kv-polarize " KV_VERSION);
    app.require_subcommand(0, 1);
    const Commands commands = make_commands(app);
    const std::vector<std::string> arguments(argv + 1, argv + argc);
    if (const auto values = asked_values(commands, arguments)) {
      std::cout << *values << std::flush;
      return exit_success;
    }
    try {
      check_command_name(commands, arguments);
      app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
      if (error.get_exit_code() == 0) return app.exit(error);
      return refuse(std::string(error.what()) + "; see kv-polarize --help");
    }
    return run(commands);
  } catch (const std::bad_alloc&) {
    return refuse("there is not enough memory; close other programs or use a smaller frame");
  } catch (const std::exception& error) {
    return refuse(error.what());
  }
}
