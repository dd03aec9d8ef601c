// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

// Whole calls: small frames and what the probe of the processor takes of them, and frames on one
// and on two threads.
//
//   call_benchmarks --benchmark_filter=latency

#include <benchmark/benchmark.h>

#include <string>

#include "frame_ring.h"
#include "kevrinth_qrm_polarization_processor.h"
#include "platform/cpu_features.h"
#include "transform_path.h"

namespace {

using kv::OutputSet;
using kv::bench::FrameRing;
using kv::bench::FrameSize;
using kv::bench::Path;
using kv::bench::Transformer;

constexpr OutputSet kIntensityAzimuthDolp(kv::Plane::intensity, kv::Plane::azimuth,
                                          kv::Plane::dolp);
constexpr FrameSize kLargeFrame{2448, 2048};

void probe(benchmark::State& state) {
  for (auto _ : state) benchmark::DoNotOptimize(kv::sse41_available());
}

/// Of each call two executions of CPUID are the part that no frame size changes: see `probe`.
void latency(benchmark::State& state, FrameSize size, Path path) {
  Transformer transform(path);
  if (kv::bench::skip_if(state, transform.missing())) return;
  FrameRing frames(size, kIntensityAzimuthDolp, false, 1);
  const kv::TransformRequest& request = frames.next();
  for (auto _ : state) transform(request);
}

/// Each thread has a frame of its own; the rates add up.
void threads(benchmark::State& state, Path path) {
  Transformer transform(path);
  if (kv::bench::skip_if(state, transform.missing())) return;
  FrameRing frames(kLargeFrame, kIntensityAzimuthDolp, false, 1);
  const kv::TransformRequest& request = frames.next();
  for (auto _ : state) transform(request);
  state.counters["frames/s"] =
      benchmark::Counter(static_cast<double>(state.iterations()), benchmark::Counter::kIsRate);
}

}  // namespace

int main(int argc, char** argv) {
  kv_polarization_processor_module_initialize();
  benchmark::RegisterBenchmark("probe", probe)->Unit(benchmark::kMicrosecond);
  for (const Path path : kv::bench::kPaths) {
    for (const FrameSize size : {FrameSize{8, 8}, {16, 16}, {64, 64}, {128, 128}, {640, 512}}) {
      const std::string name = "latency/" + size.name() + "/" + kv::bench::name_of(path);
      benchmark::RegisterBenchmark(name.c_str(), latency, size, path)
          ->Unit(benchmark::kMicrosecond);
    }
  }
  for (const Path path : kv::bench::kPaths) {
    const std::string name = std::string("frames/") + kv::bench::name_of(path);
    benchmark::RegisterBenchmark(name.c_str(), threads, path)
        ->Threads(1)
        ->Threads(2)
        ->UseRealTime()
        ->Unit(benchmark::kMillisecond);
  }
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::RunSpecifiedBenchmarks();
}
