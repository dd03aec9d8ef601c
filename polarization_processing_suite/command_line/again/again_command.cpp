// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "command_line/again/again_command.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <iostream>
#include <random>
#include <string>
#include <vector>

#include "command_line/again/recorded_run.h"
#include "command_line/command.h"
#include "command_line/compare/file_comparison.h"
#include "command_line/exit_status.h"
#include "command_line/messages.h"
#include "kv/polarization/fault.h"

namespace kv::polarization {
namespace {

/// A folder that is gone with the object.
class PassingFolder {
 public:
  PassingFolder()
      : path_(std::filesystem::temp_directory_path() /
              ("kv-polarize-again-" + std::to_string(std::random_device()()))) {}
  ~PassingFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  PassingFolder(const PassingFolder&) = delete;
  PassingFolder& operator=(const PassingFolder&) = delete;

  const std::filesystem::path& path() const { return path_; }

 private:
  std::filesystem::path path_;
};

int run_command(std::vector<std::string> words, const std::filesystem::path& folder) {
  const std::u8string name = folder.u8string();
  words.insert(words.end(), {"--quiet", "-o", std::string(name.begin(), name.end())});
  CLI::App app;
  const auto command = make_transform_command(app);
  std::ranges::reverse(words);  // the parser takes them from the end
  app.parse(words);
  return command->run();
}

/// The one result among what the run has written.
std::filesystem::path result_in(const std::filesystem::path& folder, const std::string& ending) {
  for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
    if (entry.is_regular_file() && entry.path().extension() == ending) return entry.path();
  }
  throw Fault(FaultKind::file, "the recorded command made no file of that kind");
}

void tell_of_other_conditions(const RecordedRun& run) {
  for (const std::string& difference : run.differences_from_here()) {
    complain("warning: " + difference);
  }
}

}  // namespace

int run_again(const AgainOptions& options) {
  const std::filesystem::path result = std::filesystem::absolute(options.result);
  const RecordedRun run(result);
  if (options.from) std::filesystem::current_path(*options.from);
  run.check_input();
  const PassingFolder folder;
  if (run_command(run.command(), folder.path()) != exit_success) {
    throw Fault(FaultKind::file, "the recorded command failed; what it needs is told above");
  }
  const std::filesystem::path made = result_in(folder.path(), result.extension().string());
  const std::string name = printable(options.result);
  if (compare_files(result, made, {.bytes_only = true}).verdict == Verdict::equal) {
    std::cout << name << ": made again, to the same bytes" << std::endl;
    return exit_success;
  }
  tell_of_other_conditions(run);
  const FileComparison pixels = compare_files(result, made);
  if (pixels.verdict == Verdict::equal) {
    std::cout << name << ": made again, to the same pixels; the files differ in what they record"
              << std::endl;
  } else {
    std::cout << name << ": made again, differently: " << text_of(pixels) << std::endl;
  }
  return exit_some_failed;
}

}  // namespace kv::polarization
