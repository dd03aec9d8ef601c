// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include <algorithm>
#include <sstream>
#include <thread>

#include "command_line/bench/bench_command.h"
#include "command_line/command.h"
#include "command_line/options/common_options.h"
#include "command_line/options/values.h"

namespace kv::polarization {
namespace {

constexpr int kMostThreads = 1024;
constexpr const char* kUsualPlanes =
    "intensity,azimuth,dolp,intensity+azimuth+dolp,"
    "intensity+stokes_s1+stokes_s2+azimuth+dolp";

std::vector<std::string> plane_names() {
  std::vector<std::string> names;
  names.reserve(kPlanes.size());
  for (const PlaneTraits& traits : kPlanes) names.emplace_back(traits.name);
  return names;
}

OutputSet planes_of(const std::string& text) {
  OutputSet planes;
  std::istringstream names(text);
  for (std::string name; std::getline(names, name, '+');) {
    planes.add(plane_named(choice_of(name, plane_names())).value());
  }
  if (planes.empty()) throw BadValue("a set of planes is empty; name a plane");
  return planes;
}

std::vector<OutputSet> sets_of(const std::string& list) {
  std::vector<OutputSet> sets;
  for (const std::string& text : split_list(list)) sets.push_back(planes_of(text));
  if (sets.empty()) throw BadValue("the list is empty; name a plane");
  return sets;
}

std::vector<int> threads_of(const std::string& list) {
  std::vector<int> threads;
  for (const std::string& text : split_list(list)) {
    threads.push_back(static_cast<int>(whole_number_of(text, 1, kMostThreads)));
  }
  if (threads.empty()) throw BadValue("the list is empty; write, for example, 1,4");
  return threads;
}

std::vector<int> usual_threads() {
  const int cores = static_cast<int>(std::max(1u, std::thread::hardware_concurrency()));
  return cores == 1 ? std::vector{1} : std::vector{1, cores};
}

CommandPage bench_page() {
  return {
      .name = "bench",
      .summary = "Measure how many frames a second the library computes on this machine",
      .details =
          "Whole frames in memory, without files. The ring is more than 200 MB of frames and "
          "planes that take turns, as a camera's driver hands them over: these are the rates to "
          "plan with. Warm are those of one frame over and over, as far as the caches hold it. CPU "
          "ms "
          "are those of all threads for a frame.\n"
          "\n"
          "Measured are the vector module that the library takes on this processor, on each number "
          "of threads, and the library without it on one thread, by a copy in a temporary folder "
          "where it finds no module. Where that does not work, as on Windows, the output says so; "
          "normalized_stokes is left out there, as one call of the library does not make all of "
          "it. Rates are means over the time of a measurement: close other programs.",
      .examples = {"kv-polarize bench",
                   "kv-polarize bench --planes dolp,azimuth+dolp --threads 1,2,4 --time 2",
                   "kv-polarize bench --json > bench.json"}};
}

class BenchCommand : public Command {
 public:
  explicit BenchCommand(CLI::App& app) : Command(app, bench_page()) {
    options_.planes = sets_of(kUsualPlanes);
    options_.threads = usual_threads();
    add_frame();
    options().add({.names = "--planes",
                   .value = "LIST",
                   .summary = "Planes to compute, one set after the other, with + within a set",
                   .details = "Planes are " + comma_list(plane_names()) + ".",
                   .initial = "three planes, and the sets of these and of all 16-bit ones"},
                  [this](const std::string& list) { options_.planes = sets_of(list); });
    options().add({.names = "--threads",
                   .value = "LIST",
                   .summary = "Numbers of threads that a frame is computed on",
                   .initial = "1 and the machine's cores"},
                  [this](const std::string& list) { options_.threads = threads_of(list); });
    options().add({.names = "--time",
                   .value = "SECONDS",
                   .summary = "How long to measure each rate, at the least",
                   .initial = "0.3"},
                  number_into(options_.seconds, 0, 3600));
    options().add_flag({.names = "--json", .summary = "Print one JSON object"}, options_.json);
  }

  int run() override { return run_bench(options_); }

 private:
  void add_frame() {
    options().add(
        {.names = "--width", .value = "N", .summary = "Columns of the frames", .initial = "2448"},
        whole_number_into(options_.width, 4, kLongestSide));
    options().add(
        {.names = "--height", .value = "N", .summary = "Rows of the frames", .initial = "2048"},
        whole_number_into(options_.height, 2, kLongestSide));
    options().add({.names = "--bit-depth",
                   .value = "N",
                   .summary = "Significant bits of a sample, 1 to 16",
                   .initial = "12"},
                  whole_number_into(options_.bit_depth, 1, 16));
    options().add({.names = "--file",
                   .value = "FRAME",
                   .summary = "Take the first frame of this file in place of a simulated one",
                   .details = "Its own size and bit depth then count. What a frame shows changes "
                              "the rates by little.",
                   .completion = Completion::file},
                  path_into(options_.file), [this] { options_.file.reset(); });
  }

  BenchOptions options_;
};

}  // namespace

std::unique_ptr<Command> make_bench_command(CLI::App& app) {
  return std::make_unique<BenchCommand>(app);
}

}  // namespace kv::polarization
