#pragma once

#include <benchmark/benchmark.h>

#include <cstddef>
#include <functional>

namespace kv::bench {

/// Times `work` and `limit` in turn and reports, beside the time of `work`, the medians of both as
/// megapixels per second and their ratio (`x_copy`, 1 being the limit). In turn, because the speed
/// of a shared machine drifts.
void time_against_limit(benchmark::State& state, std::size_t pixels,
                        const std::function<void()>& work, const std::function<void()>& limit);

}  // namespace kv::bench
