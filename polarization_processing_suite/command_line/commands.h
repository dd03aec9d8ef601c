#pragma once

#include <CLI/CLI.hpp>
#include <memory>

namespace kv::polarization {

/// A command of the tool: its options, and what it does.
class Command {
 public:
  explicit Command(CLI::App& options) : options_(options) {}
  virtual ~Command() = default;
  Command(const Command&) = delete;
  Command& operator=(const Command&) = delete;

  bool chosen() const { return options_.parsed(); }

  /// Does the work of the options as they were parsed. Returns an exit status.
  virtual int run() = 0;

 protected:
  CLI::App& options() { return options_; }

 private:
  CLI::App& options_;
};

// Each adds its command to the application, which must outlive it.
std::unique_ptr<Command> make_transform_command(CLI::App& app);
std::unique_ptr<Command> make_simulate_command(CLI::App& app);
std::unique_ptr<Command> make_calibrate_command(CLI::App& app);
std::unique_ptr<Command> make_identify_command(CLI::App& app);

}  // namespace kv::polarization
