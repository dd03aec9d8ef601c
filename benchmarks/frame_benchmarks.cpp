// Frame kernels of both forms beside the copy of the same streams.
//
//   frame_benchmarks --benchmark_filter='2448x2048.*sse41'

#include <benchmark/benchmark.h>

#include <string>

#include "copy_limit.h"
#include "cpu_features.h"
#include "paired_timing.h"
#include "processor_instance.h"
#include "routing/kernel_selector.h"
#include "sample_frame.h"

namespace {

using kv::OutputSet;
using kv::bench::FrameSize;

constexpr FrameSize kSizes[] = {{64, 64}, {640, 512}, {2448, 2048}, {4096, 3000}};

struct NamedOutputs {
  const char* name;
  OutputSet outputs;
};

constexpr NamedOutputs kOutputs[] = {
    {"intensity", {.intensity = true}},
    {"stokes_s1", {.stokes_s1 = true}},
    {"azimuth", {.azimuth = true}},
    {"dolp", {.dolp = true}},
    {"intensity+azimuth+dolp", {.intensity = true, .azimuth = true, .dolp = true}},
    {"five_planes",
     {.intensity = true, .stokes_s1 = true, .stokes_s2 = true, .azimuth = true, .dolp = true}},
    {"all_six",
     {.normalized_stokes = true,
      .intensity = true,
      .stokes_s1 = true,
      .stokes_s2 = true,
      .azimuth = true,
      .dolp = true}},
    {"normalized_stokes", {.normalized_stokes = true}},
};

void time_kernel(benchmark::State& state, FrameSize size, OutputSet outputs, bool scaled,
                 bool sse41) {
  if (sse41 && !kv::sse41_available()) {
    state.SkipWithError("this processor has no SSE4.1");
    return;
  }
  kv::bench::SampleFrame frame(size);
  const kv::TransformRequest request = frame.request(outputs, scaled);
  const PolarizationProcessor processor(kv::CpuTier::baseline);
  kv::bench::time_against_limit(
      state, size.pixels(), [&] { kv::select_kernel(request, processor.phase_views[0], sse41); },
      [&] { kv::bench::copy_streams(request); });
}

void register_kernels() {
  for (const FrameSize size : kSizes) {
    for (const bool sse41 : {true, false}) {
      for (const bool scaled : {false, true}) {
        for (const auto& [name, outputs] : kOutputs) {
          if (scaled && !outputs.has_linear_plane()) continue;
          const std::string full_name = "kernel/" + size.name() + "/" + name +
                                        (scaled ? "/scaled" : "/unscaled") +
                                        (sse41 ? "/sse41" : "/sse2");
          benchmark::RegisterBenchmark(full_name.c_str(), time_kernel, size, outputs, scaled, sse41)
              ->UseManualTime()
              ->Unit(benchmark::kMillisecond);
        }
      }
    }
  }
}

}  // namespace

int main(int argc, char** argv) {
  register_kernels();
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::RunSpecifiedBenchmarks();
}
