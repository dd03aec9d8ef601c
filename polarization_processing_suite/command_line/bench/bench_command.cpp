// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "command_line/bench/bench_command.h"

#include <algorithm>
#include <iostream>

#include "command_line/bench/frame_ring.h"
#include "command_line/bench/library_copy.h"
#include "command_line/exit_status.h"
#include "command_line/json_output.h"
#include "command_line/machine/machine_json.h"
#include "command_line/messages.h"
#include "command_line/number_text.h"
#include "command_line/stopwatch.h"
#include "kv/image_files/frame_reader.h"
#include "kv/polarization/fault.h"
#include "kv/polarization/processor.h"
#include "platform/process.h"
#include "toolkit/machine/machine.h"
#include "toolkit/simulation/mosaic_camera.h"

namespace kv::polarization {
namespace {

/// Of one frame, in seconds.
struct Cost {
  double time = 0;            ///< by the clock
  double processor_time = 0;  ///< of all threads
};

struct Cell {
  OutputSet planes;
  Kernels kernels;
  int threads;
  std::size_t ring_frames = 0;
  Cost ring{};  ///< in a ring of frames larger than the caches
  Cost warm{};  ///< in the memory of the call before
};

/// The mean of calls that take as long as that together.
template <class Call>
Cost cost_of(double least_seconds, Call call) {
  call();  // wakes threads, and fetches what is used at every call
  const double processor_start = platform::processor_seconds();
  Stopwatch stopwatch;
  for (double calls = 1;; ++calls) {
    call();
    const double seconds = stopwatch.seconds();
    if (seconds >= least_seconds || platform::interrupted()) {
      return {seconds / calls, (platform::processor_seconds() - processor_start) / calls};
    }
  }
}

Frame frame_of(const BenchOptions& options) {
  if (!options.file) {
    return photograph(Scene(options.width, options.height), options.width, options.height,
                      {.bit_depth = options.bit_depth});
  }
  try {
    return open_frames(*options.file)->read(0);
  } catch (const Fault& fault) {
    throw Fault(fault.kind(), options.file->string() + ": " + fault.what());
  }
}

class Bench {
 public:
  // The copy comes before the look at the machine, which opens the library.
  explicit Bench(const BenchOptions& options)
      : options_(options), machine_(look_at_machine()), frame_(frame_of(options)) {}

  int run() {
    tell_what_is_left_out();
    for (const OutputSet planes : options_.planes) {
      FrameRing ring(frame_, planes);
      for (const int threads : options_.threads) {
        Processor processor(threads);
        measure(ring, {planes, machine_.kernels, threads},
                [&](FrameSlot& slot) { processor.transform(slot.frame, {}, slot.planes.views()); });
      }
      // Behind the processor, which refuses what the library must not get.
      measure_copy(ring, planes);
    }
    if (platform::interrupted()) return exit_interrupted;
    std::cout << (options_.json ? text_of(json()) : table()) << std::flush;
    return exit_success;
  }

 private:
  bool has_module() const { return machine_.kernels != machine_.own_kernels; }

  void tell_what_is_left_out() {
    if (!has_module()) return;
    if (!copy_.obstacle().empty()) {
      left_out_.push_back(std::string(traits_of(machine_.own_kernels).title) + ": " +
                          copy_.obstacle());
    }
    if (machine_.kernels == Kernels::avx512) {
      left_out_.emplace_back(
          "AVX2 module: the library takes the module of the processor's own tier alone");
    }
  }

  /// The library without its module. A single call of it leaves half of the pairs of
  /// normalized_stokes out, which would be no measure of the whole plane.
  void measure_copy(FrameRing& ring, OutputSet planes) {
    if (!has_module() || !copy_.obstacle().empty() || planes.has(Plane::normalized_stokes)) return;
    measure(ring, {planes, machine_.own_kernels, 1},
            [this](FrameSlot& slot) { copy_.transform(slot.frame, slot.planes.views()); });
  }

  template <class Transform>
  void measure(FrameRing& ring, Cell cell, Transform transform) {
    if (platform::interrupted()) return;
    cell.ring_frames = ring.size();
    cell.ring = cost_of(options_.seconds, [&] { transform(ring.next()); });
    cell.warm = cost_of(options_.seconds, [&] { transform(ring.first()); });
    cells_.push_back(cell);
  }

  double megapixels() const { return static_cast<double>(frame_.samples.size()) / 1e6; }

  std::string table() const;
  Json json() const;
  Json json_of_cell(const Cell& cell) const;

  const BenchOptions& options_;
  LibraryCopy copy_;
  Machine machine_;
  Frame frame_;
  std::vector<Cell> cells_;
  std::vector<std::string> left_out_;
};

std::string Bench::table() const {
  std::string text = formatted("%s, %u cores; frames of %d x %d pixels with %d bits\n\n",
                               machine_.processor.c_str(), machine_.cores, frame_.width,
                               frame_.height, frame_.bit_depth);
  std::size_t longest = std::string("planes").size();
  for (const OutputSet planes : options_.planes) {
    longest = std::max(longest, name_of(planes).size());
  }
  const int column = static_cast<int>(longest);
  text += formatted("%-*s  %-22s  threads  frames/s    MP/s      ms  CPU ms  warm: frames/s\n",
                    column, "planes", "kernels");
  for (const Cell& cell : cells_) {
    text += formatted("%-*s  %-22s  %7d  %8.1f  %6.0f  %6.2f  %6.2f  %14.1f\n", column,
                      name_of(cell.planes).c_str(), traits_of(cell.kernels).title.data(),
                      cell.threads, 1 / cell.ring.time, megapixels() / cell.ring.time,
                      1e3 * cell.ring.time, 1e3 * cell.ring.processor_time, 1 / cell.warm.time);
  }
  for (const std::string& line : left_out_) text += "\nnot measured: " + printable(line);
  return text + (left_out_.empty() ? "" : "\n");
}

Json Bench::json_of_cell(const Cell& cell) const {
  Json json;
  json["planes"] = Json::array();
  for (const PlaneTraits& traits : kPlanes) {
    if (cell.planes.has(traits.plane)) json["planes"].push_back(traits.name);
  }
  json["kernels"] = traits_of(cell.kernels).name;
  json["threads"] = cell.threads;
  json["ring_frames"] = cell.ring_frames;
  json["frames_per_second"] = 1 / cell.ring.time;
  json["megapixels_per_second"] = megapixels() / cell.ring.time;
  json["processor_ms_per_frame"] = 1e3 * cell.ring.processor_time;
  json["warm_frames_per_second"] = 1 / cell.warm.time;
  json["warm_megapixels_per_second"] = megapixels() / cell.warm.time;
  return json;
}

Json Bench::json() const {
  Json json;
  json["version"] = KV_VERSION;
  json["machine"] = json_of(machine_);
  json["width"] = frame_.width;
  json["height"] = frame_.height;
  json["bit_depth"] = frame_.bit_depth;
  json["rates"] = Json::array();
  for (const Cell& cell : cells_) json["rates"].push_back(json_of_cell(cell));
  json["not_measured"] = left_out_;
  return json;
}

}  // namespace

std::string name_of(OutputSet planes) {
  std::string name;
  for (const PlaneTraits& traits : kPlanes) {
    if (planes.has(traits.plane)) name += (name.empty() ? "" : "+") + std::string(traits.name);
  }
  return name;
}

int run_bench(const BenchOptions& options) { return Bench(options).run(); }

}  // namespace kv::polarization
