// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

// Float maps of whole frames, beside the planes that the library itself makes of the
// same frames through the toolkit.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <string>
#include <utility>

#include "kv/polarization.h"

using namespace kv::polarization;

namespace {

constexpr int kWidth = 2448;
constexpr int kHeight = 2048;
constexpr Map kLight[] = {Map::s0, Map::s1, Map::s2, Map::dolp, Map::angle};

/// Two frames of 12 bits in turn. With their planes or maps they are larger than the caches.
const std::array<Frame, 2>& frames() {
  static const std::array<Frame, 2> all = [] {
    std::array<Frame, 2> made = {make_frame(kWidth, kHeight, 12), make_frame(kWidth, kHeight, 12)};
    std::uint32_t random = 1;
    for (Frame& frame : made) {
      for (auto& sample : frame.samples) {
        random = random * 1664525 + 1013904223;
        sample = static_cast<std::uint16_t>(500 + (random >> 21));
      }
    }
    return made;
  }();
  return all;
}

template <class Output, class Fill>
void time_frames(benchmark::State& state, std::array<Output, 2>& outputs, Fill fill) {
  // The system clears the pages of new memory when they are first written.
  for (std::size_t turn = 0; turn < 2; ++turn) fill(frames()[turn], outputs[turn]);
  std::size_t turn = 0;
  for (auto _ : state) {
    fill(frames()[turn], outputs[turn]);
    turn ^= 1;
    benchmark::ClobberMemory();
  }
}

void planes(benchmark::State& state) {
  Processor processor;
  std::array<Planes, 2> all;
  for (Planes& each : all) {
    each.reshape(kWidth, kHeight, OutputSet(Plane::intensity, Plane::azimuth, Plane::dolp));
  }
  time_frames(state, all, [&](const Frame& frame, Planes& each) {
    processor.transform(frame, {}, each.views());
  });
}
BENCHMARK(planes)->Name("planes: intensity azimuth dolp")->Unit(benchmark::kMillisecond);

void maps(benchmark::State& state, MapSet wanted, const MapSettings& settings, int threads) {
  MapMaker maker(threads);
  std::array<Maps, 2> all;
  for (Maps& each : all) each.reshape(kWidth, kHeight, wanted);
  time_frames(state, all, [&](const Frame& frame, Maps& each) {
    maker.fill(frame, {}, settings, each.views());
  });
}

void mean_plane(benchmark::State& state) {
  std::array<Buffer<std::uint16_t>, 2> all;
  for (auto& each : all) each.resize(pixel_count(kWidth, kHeight));
  time_frames(state, all, [](const Frame& frame, auto& mean) { fill_mean_plane(frame, mean); });
}
BENCHMARK(mean_plane)->Name("mean plane")->Unit(benchmark::kMillisecond);

void region(benchmark::State& state, const SampleSettings& settings) {
  for (auto _ : state) {
    benchmark::DoNotOptimize(
        region_statistics(frames()[0], {}, settings, Rectangle{0, 0, kWidth, kHeight}));
  }
}

}  // namespace

int main(int argc, char** argv) {
  MapSet light;
  for (const Map map : kLight) light.add(map);
  MapSet light_and_quality = light;
  light_and_quality.add(Map::quality);
  const SampleSettings noisy{.black_level = 100, .noise = SensorNoise{0.39f, 2.5f}};
  SampleSettings rescuing = noisy;
  rescuing.rescue = true;
  // A level that a sample in five reaches, in most neighbourhoods one or more.
  SampleSettings clipping = rescuing;
  clipping.clip_level = 2140;

  const std::pair<const char*, std::pair<MapSet, MapSettings>> cases[] = {
      {"maps: s0", {MapSet(Map::s0), {}}},
      {"maps: dolp angle", {MapSet(Map::dolp, Map::angle), {}}},
      {"maps: s0 s1 s2 dolp angle", {light, {}}},
      {"maps: the same, quality", {light_and_quality, {}}},
      {"maps: all", {MapSet::all(), {.samples = noisy}}},
      {"maps: all, compensated", {MapSet::all(), {noisy, IntensityCompensation{}}}},
      {"maps: all, rescue", {MapSet::all(), {.samples = rescuing}}},
      {"maps: all, rescue of many", {MapSet::all(), {.samples = clipping}}},
  };
  for (const auto& [name, request] : cases) {
    for (const int threads : {1, 2}) {
      benchmark::RegisterBenchmark(
          (std::string(name) + "/threads:" + std::to_string(threads)).c_str(), maps, request.first,
          request.second, threads)
          ->UseRealTime()
          ->Unit(benchmark::kMillisecond);
    }
  }
  benchmark::RegisterBenchmark("region: whole frame", region, noisy)->Unit(benchmark::kMillisecond);
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
}
