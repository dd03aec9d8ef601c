// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

// Correcting a frame by its sensor's calibration, beside copying the same streams: coefficients and
// samples in, samples out. Frames take turns, so that no cache holds them.
//
//   correction_benchmarks

#include <benchmark/benchmark.h>
#include <kv/calibration/frame_corrector.h>

#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "paired_timing.h"

namespace {

using namespace kv::polarization;

constexpr int kWidth = 2448;
constexpr int kHeight = 2048;
constexpr std::size_t kPixels = pixel_count(kWidth, kHeight);

/// Of pixels that scatter by 1 per cent.
Calibration made_calibration() {
  Calibration made;
  made.width = kWidth;
  made.height = kHeight;
  made.bit_depth = 12;
  made.clip_level = 4095;
  for (int i = 0; i < 4; ++i) {
    PixelClass& all = made.classes[static_cast<std::size_t>(i)];
    all.nominal_angle = 45 * i;
    all.gain.value = 1;
    all.diattenuation.value = 0.97;
    all.orientation.value = 45 * i;
  }
  PixelMaps& maps = made.maps;
  std::mt19937 random(1);
  const auto fill = [&](Buffer<float>& map, double mean, double scatter) {
    map.resize(kPixels);
    for (float& value : map) {
      value =
          static_cast<float>(mean + scatter * (static_cast<double>(random() % 4001) / 1000 - 2));
    }
  };
  fill(maps.black, 60, 2);
  fill(maps.gain, 1, 0.01);
  fill(maps.diattenuation, 0.97, 0.01);
  fill(maps.orientation, 0, 0.4);
  for (auto* map : {&maps.gain_error, &maps.diattenuation_error, &maps.orientation_error}) {
    fill(*map, 0, 0);
  }
  maps.bad.resize(kPixels);
  std::fill(maps.bad.begin(), maps.bad.end(), std::uint8_t{0});
  for (int i = 0; i < 1000; ++i) maps.bad[random() % kPixels] = bad_pixel::noisy;
  return made;
}

struct Case {
  std::string name;
  CorrectionSettings settings;
  bool flags = false;
  double clipped = 0;  ///< share of the samples
};

class Slots {
 public:
  explicit Slots(double clipped) : slots_(7) {  // odd, so that both of a pair meet every one
    std::mt19937 random(1);
    for (Slot& slot : slots_) {
      slot.frame = make_frame(kWidth, kHeight, 12);
      for (std::uint16_t& sample : slot.frame.samples) {
        sample = static_cast<std::uint16_t>(1000 + random() % 500);
        if (static_cast<double>(random()) < clipped * 4294967296.0) sample = 4095;
      }
      slot.corrected = make_frame(kWidth, kHeight, 16);
    }
  }
  struct Slot {
    Frame frame;
    Frame corrected;
  };
  Slot& next() { return slots_[next_ = (next_ + 1) % slots_.size()]; }

 private:
  std::vector<Slot> slots_;
  std::size_t next_ = 0;
};

void correct(benchmark::State& state, const Case& tried) {
  static const Calibration calibration = made_calibration();
  FrameCorrector corrector(calibration, {}, kWidth, kHeight, tried.settings);
  Slots slots(tried.clipped);
  std::vector<std::uint8_t> flags(tried.flags ? kPixels : 0);
  // Copying reads a byte and writes one: half of the coefficients are copied to the other half.
  Buffer<std::uint8_t> coefficients(tried.settings.per_cell ? 8 * kPixels : 0);
  std::fill(coefficients.begin(), coefficients.end(), std::uint8_t{1});
  const std::size_t half = coefficients.size() / 2;
  kv::bench::time_against(
      state, kPixels,
      [&] {
        auto& slot = slots.next();
        corrector.correct(slot.frame, slot.corrected, flags);
      },
      "copy",
      [&] {
        auto& slot = slots.next();
        if (half != 0) std::memcpy(coefficients.data(), coefficients.data() + half, half);
        std::memcpy(slot.corrected.samples.data(), slot.frame.samples.data(), 2 * kPixels);
      });
}

void prepare(benchmark::State& state) {
  const Calibration calibration = made_calibration();
  for (auto _ : state) FrameCorrector(calibration, {}, kWidth, kHeight);
}

}  // namespace

int main(int argc, char** argv) {
  const std::vector<Case> cases = {{"cells", {}},
                                   {"cells/threads:2", {.threads = 2}},
                                   {"class_means", {.per_cell = false}},
                                   {"cells/flags", {}, true},
                                   {"cells/flags/clipped:1%", {}, true, 0.01},
                                   {"cells/flags/clipped:1%/rescue", {.rescue = true}, true, 0.01}};
  for (const Case& tried : cases) {
    benchmark::RegisterBenchmark(tried.name.c_str(), correct, tried)
        ->UseManualTime()
        ->Unit(benchmark::kMillisecond);
  }
  benchmark::RegisterBenchmark("prepare", prepare)->Unit(benchmark::kMillisecond);
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::RunSpecifiedBenchmarks();
}
