// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <benchmark/benchmark.h>

#include <array>
#include <optional>

#include "polarization_processor/processor_instance.h"
#include "polarization_processor/records/transform_request.h"

namespace kv::bench {

/// The ways that a frame can take through the library. All but the SSE2 form, which a processor
/// with SSE4.1 never gets, are measured as whole calls of the public function.
enum class Path { sse2, sse41, avx2, avx512 };

inline constexpr std::array kPaths{Path::sse2, Path::sse41, Path::avx2, Path::avx512};

const char* name_of(Path path);

/// Skips a benchmark that lacks something; null for nothing. Returns whether it did.
bool skip_if(benchmark::State& state, const char* missing);

/// One way, with a processor of its own.
class Transformer {
 public:
  explicit Transformer(Path path);

  /// What this machine or this build lacks for the path; null where it lacks nothing.
  const char* missing() const;

  void operator()(const TransformRequest& request);

 private:
  Path path_;
  PolarizationProcessor processor_;
};

}  // namespace kv::bench
