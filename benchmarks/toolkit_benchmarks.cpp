// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

// The toolkit's ways with whole frames, beside the library's plain call for the same planes. All
// buffers are the toolkit's; frames and planes take turns, so that no cache holds them when they
// are large.
//
//   toolkit_benchmarks --benchmark_filter=2448x2048

#include <benchmark/benchmark.h>
#include <kv/polarization.h>

#include <array>
#include <random>
#include <string>
#include <vector>

#include "paired_timing.h"

namespace {

using namespace kv::polarization;

struct Size {
  int width;
  int height;
  std::string name() const { return std::to_string(width) + "x" + std::to_string(height); }
};

struct NamedPlanes {
  const char* name;
  OutputSet planes;
};

constexpr std::array kSets = {
    NamedPlanes{"intensity", OutputSet(Plane::intensity)},
    NamedPlanes{"stokes_s1", OutputSet(Plane::stokes_s1)},
    NamedPlanes{"azimuth", OutputSet(Plane::azimuth)},
    NamedPlanes{"dolp", OutputSet(Plane::dolp)},
    NamedPlanes{"intensity+azimuth+dolp", OutputSet(Plane::intensity, Plane::azimuth, Plane::dolp)},
    NamedPlanes{"five_planes", OutputSet(Plane::intensity, Plane::stokes_s1, Plane::stokes_s2,
                                         Plane::azimuth, Plane::dolp)},
    NamedPlanes{"normalized_stokes", OutputSet(Plane::normalized_stokes)},
    NamedPlanes{"all_six", OutputSet::all()}};

/// A frame of 12 bits and its planes.
struct Slot {
  Frame frame;
  Planes planes;
};

class Ring {
 public:
  Ring(Size size, OutputSet wanted) : slots_(kSlots) {
    std::mt19937 random(1);
    for (Slot& slot : slots_) {
      slot.frame =
          make_frame(static_cast<unsigned>(size.width), static_cast<unsigned>(size.height), 12);
      for (std::uint16_t& sample : slot.frame.samples) {
        sample = static_cast<std::uint16_t>(1000 + random() % 500);
      }
      slot.planes.reshape(size.width, size.height, wanted, 4095);
    }
  }
  Slot& next() { return slots_[next_ = (next_ + 1) % kSlots]; }

 private:
  static constexpr std::size_t kSlots = 7;  // odd, so that both of a pair meet every one
  std::vector<Slot> slots_;
  std::size_t next_ = 0;
};

/// The library by its C function.
class PlainCall {
 public:
  PlainCall() { kv_polarization_processor_create_polarization_processor(&handle_); }
  ~PlainCall() { kv_polarization_processor_destroy_polarization_processor(handle_); }
  PlainCall(const PlainCall&) = delete;
  PlainCall& operator=(const PlainCall&) = delete;

  void operator()(Slot& slot) const {
    const PlaneViews planes = slot.planes.views();
    const auto level = [](const LevelView& view) {
      return view.levels.empty() ? nullptr : view.levels.data();
    };
    kv_polarization_processor_transform(
        handle_, kv_polar_phase_0, slot.frame.samples.data(), 0, 0, slot.frame.width,
        slot.frame.height, 12, 4095,
        planes.normalized_stokes.empty() ? nullptr : planes.normalized_stokes.data(),
        level(planes.intensity), level(planes.stokes_s1), level(planes.stokes_s2),
        level(planes.azimuth), level(planes.dolp));
  }

 private:
  Processor module_;  // keeps the library open
  PolarizationProcessor* handle_ = nullptr;
};

void whole_frame(benchmark::State& state, Size size, OutputSet wanted, int threads,
                 WeightReach reach) {
  Ring ring(size, wanted);
  Processor processor(threads);
  const PlainCall plain;
  kv::bench::time_against(
      state, pixel_count(size.width, size.height),
      [&] {
        Slot& slot = ring.next();
        processor.transform(slot.frame, {}, slot.planes.views(), reach);
      },
      "plain", [&] { plain(ring.next()); });
}

/// A left-aligned frame, which has to be copied first.
void copied_frame(benchmark::State& state, Size size, OutputSet wanted) {
  Ring ring(size, wanted);
  Processor processor;
  const PlainCall plain;
  kv::bench::time_against(
      state, pixel_count(size.width, size.height),
      [&] {
        Slot& slot = ring.next();
        FrameView view = slot.frame;
        view.alignment = SampleAlignment::left;
        processor.transform(view, {}, slot.planes.views());
      },
      "plain", [&] { plain(ring.next()); });
}

template <class... Arguments>
void add(const std::string& name, Arguments... arguments) {
  benchmark::RegisterBenchmark(name.c_str(), arguments...)
      ->UseManualTime()
      ->Unit(benchmark::kMillisecond);
}

}  // namespace

int main(int argc, char** argv) {
  for (const Size size : {Size{640, 512}, Size{2448, 2048}}) {
    for (const auto& [name, planes] : kSets) {
      const std::string begin = size.name() + "/" + name + "/";
      for (const int threads : {1, 2}) {
        add(begin + "threads:" + std::to_string(threads), whole_frame, size, planes, threads,
            WeightReach::as_library);
        add(begin + "weights/threads:" + std::to_string(threads), whole_frame, size, planes,
            threads, WeightReach::every_pixel);
      }
      add(begin + "left_aligned", copied_frame, size, planes);
    }
  }
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::RunSpecifiedBenchmarks();
}
