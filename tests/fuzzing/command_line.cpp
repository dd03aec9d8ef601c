// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

// The tool's command line: words of a table or of any bytes, in a folder with some files, one of
// them of any content.
#include <fcntl.h>
#include <unistd.h>

#include <iostream>
#include <streambuf>
#include <string>
#include <utility>
#include <vector>

#include "command_line/exit_status.h"
#include "command_line/run_tool.h"
#include "fuzzing/command_words.h"
#include "fuzzing/work_folder.h"

namespace kv::fuzzing {
namespace {

namespace files = std::filesystem;
using Words = std::vector<std::string>;

constexpr std::size_t kMostWords = 16;
constexpr int kMostBenchmarks = 100;

/// What is told goes nowhere; formatting it is work that is tried.
class Nowhere : public std::streambuf {
  int overflow(int character) override { return character; }
};

/// Standard input and output give and take nothing; the error stream stays libFuzzer's.
void leave_standard_streams() {
  static Nowhere nowhere;
  std::cout.rdbuf(&nowhere);
  std::cerr.rdbuf(&nowhere);
  const int null = ::open("/dev/null", O_RDWR);
  require(null >= 0 && ::dup2(null, STDIN_FILENO) >= 0 && ::dup2(null, STDOUT_FILENO) >= 0,
          "there is a place for what nobody reads");
}

struct Folders {
  WorkFolder root;
  files::path samples = root.path() / "samples";
  files::path work = root.path() / "work";
};

const Folders& folders() {
  static const Folders made;
  return made;
}

/// Small files of each kind, made once by the tool itself.
void make_samples() {
  files::create_directory(folders().samples);
  files::current_path(folders().samples);
  const Words size = {"--width", "16", "--height", "12"};
  const auto run = [&](Words words, bool sized = true) {
    if (sized) words.insert(words.end(), size.begin(), size.end());
    require(polarization::run_tool(words) == polarization::exit_success, "samples are made");
  };
  for (const char* name : {"a.png", "b.tiff", "c.npy", "d.pgm", "e.raw"}) {
    run({"simulate", "-o", name, "--bit-depth", "12"});
  }
  run({"simulate", "--frames", "3", "-o", "night.tiff"});
  run({"simulate", "--calibration-stack", "--sensor", "1", "--bit-depth", "12", "-o", "stack"});
  run({"calibrate", "--manifest", "stack/stack.csv", "-o", "camera.json"}, false);
  run({"transform", "a.png", "-o", "planes", "--planes", "dolp"}, false);
}

/// The samples, and nothing else, in the folder that the tool works in.
void renew_work_folder() {
  std::error_code ignored;
  files::remove_all(folders().work, ignored);
  files::copy(folders().samples, folders().work,
              files::copy_options::recursive | files::copy_options::create_hard_links);
  files::current_path(folders().work);
}

/// A word of any bytes that leads out of no folder, and asks for no great size: no slash, no two
/// dots or three digits behind one another. A backslash could stand for a slash in JSON.
std::string harmless(std::string_view bytes) {
  std::string word;
  std::size_t digits = 0;
  for (const char byte : bytes) {
    const bool digit = byte >= '0' && byte <= '9';
    digits = digit ? digits + 1 : 0;
    const bool refused = byte == '/' || byte == '\\' || byte == '\0' || digits > 2 ||
                         (byte == '.' && word.ends_with('.'));
    word += refused ? '_' : byte;
  }
  return word;
}

std::string choose_word(Choices& choices) {
  const std::size_t index = choices.below(256);
  if (index < kWords.size()) return std::string(kWords[index]);
  const std::string word = harmless(text_of(choices.take(choices.below(24))));
  // It names a descriptor, which may be one of libFuzzer's.
  return word.starts_with("--ev") ? "--json" : word;
}

/// The frames of a simulation, and the measurements of a benchmark, are large unless told.
void keep_small(Words& words) {
  if (words[0] != "simulate" && words[0] != "bench") return;
  const auto has = [&](std::string_view option) {
    return std::ranges::any_of(words, [&](const auto& word) { return word.starts_with(option); });
  };
  for (const char* option : {"--width=16", "--height=12"}) {
    if (!has(std::string_view(option).substr(0, 7))) words.emplace_back(option);
  }
  if (words[0] == "bench" && !has("--time")) words.emplace_back("--time=0.001");
}

Words choose_words(Choices& choices) {
  Words words = {
      std::string(choices.once_in(32) ? choose_word(choices) : choices.one_of(kCommands))};
  for (std::size_t i = choices.below(kMostWords); i > 0; --i) words.push_back(choose_word(choices));
  keep_small(words);
  return words;
}

int run(Words words) {
  const FailingAllocations failing;
  return polarization::run_tool(std::move(words));
}

}  // namespace

void set_up() {
  leave_standard_streams();
  make_samples();
  // CLI11 and libstdc++ ask for memory where they let nothing out, and end the process.
  spare_allocations_below(1024);
}

void fuzz(Choices choices) {
  const Words words = choose_words(choices);
  // Each loads a copy of the library, of which libFuzzer lets none go.
  static int benchmarks = 0;
  if (words[0] == "bench" && ++benchmarks > kMostBenchmarks) return;
  renew_work_folder();
  folders().root.write("work/any", harmless(text_of(choices.rest())));
  const int status = run(words);
  require(status >= polarization::exit_success && status <= polarization::exit_nothing_done,
          "the exit status is 0, 1 or 2");
  files::current_path(folders().root.path());
  const auto entries = std::distance(files::directory_iterator("."), files::directory_iterator());
  require(entries == 2, "nothing is written beside the working folder");
}

}  // namespace kv::fuzzing
