// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "paired_timing.h"

#include <algorithm>
#include <chrono>
#include <vector>

namespace kv::bench {
namespace {

double seconds_of(const std::function<void()>& function) {
  const auto start = std::chrono::steady_clock::now();
  function();
  benchmark::ClobberMemory();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

double median(std::vector<double>& values) {
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

}  // namespace

void time_against(benchmark::State& state, std::size_t pixels, const std::function<void()>& work,
                  const std::string& name, const std::function<void()>& other) {
  std::vector<double> work_times;
  std::vector<double> other_times;
  work();
  for (auto _ : state) {
    other_times.push_back(seconds_of(other));
    work_times.push_back(seconds_of(work));
    state.SetIterationTime(work_times.back());
  }
  const double work_time = median(work_times);
  const double other_time = median(other_times);
  const double megapixels = static_cast<double>(pixels) / 1e6;
  state.counters["ms"] = work_time * 1e3;
  state.counters["MP/s"] = megapixels / work_time;
  state.counters[name + "_MP/s"] = megapixels / other_time;
  state.counters["x_" + name] = work_time / other_time;
}

}  // namespace kv::bench
