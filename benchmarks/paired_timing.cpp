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

void time_against_limit(benchmark::State& state, std::size_t pixels,
                        const std::function<void()>& work, const std::function<void()>& limit) {
  std::vector<double> work_times;
  std::vector<double> limit_times;
  work();
  for (auto _ : state) {
    limit_times.push_back(seconds_of(limit));
    work_times.push_back(seconds_of(work));
    state.SetIterationTime(work_times.back());
  }
  const double work_time = median(work_times);
  const double limit_time = median(limit_times);
  const double megapixels = static_cast<double>(pixels) / 1e6;
  state.counters["ms"] = work_time * 1e3;
  state.counters["MP/s"] = megapixels / work_time;
  state.counters["copy_MP/s"] = megapixels / limit_time;
  state.counters["x_copy"] = work_time / limit_time;
}

}  // namespace kv::bench
