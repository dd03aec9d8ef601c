// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

// Whole frames by every path of the library, and by OpenCV, beside the copy of the same streams.
//
//   frame_benchmarks --benchmark_filter='2448x2048/.*/unscaled'

#include <benchmark/benchmark.h>

#include <string>

#include "copy_limit.h"
#include "frame_ring.h"
#include "opencv_baseline.h"
#include "paired_timing.h"
#include "polarization_processor/records/kernel_axes.h"
#include "transform_path.h"

namespace {

using kv::OutputSet;
using kv::Plane;
using kv::bench::FrameSize;
using kv::bench::Path;

constexpr FrameSize kSizes[] = {{64, 64}, {640, 512}, {2448, 2048}, {4096, 3000}};

/// Where a frame and its planes lie when a call begins: in the caches, where the call before it has
/// left them, or in memory, as a camera's driver hands them over. Eight large frames are more than
/// any cache holds.
struct Buffers {
  const char* name;
  std::size_t frames;
};
constexpr Buffers kWarm{"warm", 1};
constexpr Buffers kRing{"ring", 8};
constexpr std::size_t kLeastRingPixels = std::size_t{4} << 20;

struct NamedOutputs {
  const char* name;
  OutputSet outputs;
};

constexpr NamedOutputs kIntensityAzimuthDolp{
    "intensity+azimuth+dolp", OutputSet(Plane::intensity, Plane::azimuth, Plane::dolp)};

constexpr NamedOutputs kOutputs[] = {
    {"intensity", OutputSet(Plane::intensity)},
    {"stokes_s1", OutputSet(Plane::stokes_s1)},
    {"azimuth", OutputSet(Plane::azimuth)},
    {"dolp", OutputSet(Plane::dolp)},
    kIntensityAzimuthDolp,
    {"five_planes",
     OutputSet(Plane::intensity, Plane::stokes_s1, Plane::stokes_s2, Plane::azimuth, Plane::dolp)},
    {"all_six", OutputSet::all()},
    {"normalized_stokes", OutputSet(Plane::normalized_stokes)},
};

void time_frames(benchmark::State& state, FrameSize size, OutputSet outputs, bool scaled, Path path,
                 Buffers buffers) {
  kv::bench::Transformer transform(path);
  if (kv::bench::skip_if(state, transform.missing())) return;
  kv::bench::FrameRing frames(size, outputs, scaled, buffers.frames);
  kv::bench::time_against(
      state, size.pixels(), [&] { transform(frames.next()); }, "copy",
      [&] { kv::bench::copy_streams(frames.next()); });
}

void time_opencv(benchmark::State& state, FrameSize size, OutputSet outputs) {
  if (kv::bench::skip_if(state, kv::bench::OpencvBaseline::missing())) return;
  kv::bench::OpencvBaseline transform;
  kv::bench::FrameRing frames(size, outputs, false, kWarm.frames);
  kv::bench::time_against(
      state, size.pixels(), [&] { transform(frames.next()); }, "copy",
      [&] { kv::bench::copy_streams(frames.next()); });
}

template <class... Arguments>
void register_frame(const std::string& name, Arguments... arguments) {
  benchmark::RegisterBenchmark(name.c_str(), arguments...)
      ->UseManualTime()
      ->Unit(benchmark::kMillisecond);
}

void register_frames() {
  for (const FrameSize size : kSizes) {
    for (const bool scaled : {false, true}) {
      for (const auto& [name, outputs] : kOutputs) {
        if (scaled && !kv::has_linear_plane(outputs)) continue;
        for (const Buffers& buffers : {kWarm, kRing}) {
          if (buffers.frames > 1 && size.pixels() < kLeastRingPixels) continue;
          for (const Path path : kv::bench::kPaths) {
            register_frame(size.name() + "/" + name + (scaled ? "/scaled/" : "/unscaled/") +
                               buffers.name + "/" + name_of(path),
                           time_frames, size, outputs, scaled, path, buffers);
          }
        }
      }
    }
    const auto& [name, outputs] = kIntensityAzimuthDolp;
    register_frame(size.name() + "/" + name + "/unscaled/warm/opencv", time_opencv, size, outputs);
  }
}

}  // namespace

int main(int argc, char** argv) {
  register_frames();
  benchmark::Initialize(&argc, argv);
  benchmark::AddCustomContext("compiler", COMPILER);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::RunSpecifiedBenchmarks();
}
