// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <benchmark/benchmark.h>

#include <cstddef>
#include <functional>
#include <string>

namespace kv::bench {

/// Times `work` and what it is compared with in turn, and reports, beside the time of `work`, the
/// medians of both as megapixels per second and their ratio, x_NAME. In turn, because the speed of
/// a shared machine drifts.
void time_against(benchmark::State& state, std::size_t pixels, const std::function<void()>& work,
                  const std::string& name, const std::function<void()>& other);

}  // namespace kv::bench
