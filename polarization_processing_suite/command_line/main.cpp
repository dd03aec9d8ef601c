#include <CLI/CLI.hpp>
#include <iostream>
#include <memory>
#include <new>
#include <string>

#include "command_line/commands.h"
#include "command_line/exit_status.h"
#include "platform/process.h"

using namespace kv::polarization;

namespace {

constexpr const char* kDescription =
    "Turns raw frames of polarization cameras into Stokes, angle and degree-of-polarization "
    "planes.";

constexpr const char* kFooter =
    "Examples:\n"
    "  kv-polarize simulate -o frame.png\n"
    "  kv-polarize transform frame.png -o planes\n"
    "  kv-polarize calibrate --manifest stack.csv -o camera.json\n"
    "  kv-polarize transform night/*.tif -o planes --phase 90 --calibration camera.json\n"
    "  kv-polarize transform dump.raw -o planes --width 2448 --height 2048 --raw-format Mono12p\n"
    "\n"
    "Exit status: 0 all went well; 1 a frame or the whole work failed; 2 the command line is "
    "wrong;\n"
    "130 stopped by Ctrl-C.";

int complain(const std::string& line, int status) {
  std::cerr << "kv-polarize: " << line << std::endl;
  return status;
}

}  // namespace

int main(int argc, char** argv) {
  kv::platform::defer_interrupts();
  kv::platform::ignore_file_size_signal();
  try {
    CLI::App app(kDescription, "kv-polarize");
    app.footer(kFooter);
    app.set_version_flag("--version", "kv-polarize " KV_VERSION);
    app.require_subcommand(1);
    std::unique_ptr<Command> commands[] = {make_transform_command(app), make_simulate_command(app),
                                           make_calibrate_command(app), make_identify_command(app)};
    try {
      app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
      if (error.get_exit_code() == 0) return app.exit(error);
      return complain(std::string(error.what()) + "; see kv-polarize --help", exit_usage);
    }
    for (const auto& command : commands) {
      if (command->chosen()) return command->run();
    }
    return exit_usage;
  } catch (const std::bad_alloc&) {
    return complain("there is not enough memory; close other programs or use a smaller frame",
                    exit_failure);
  } catch (const std::exception& error) {
    return complain(error.what(), exit_failure);
  }
}
