// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "transform_path.h"

#include "kevrinth_qrm_polarization_processor.h"
#include "platform/cpu_features.h"
#include "polarization_processor/routing/kernel_selector.h"

namespace kv::bench {
namespace {

CpuTier tier_of(Path path) {
  switch (path) {
    case Path::avx2:
      return CpuTier::avx2;
    case Path::avx512:
      return CpuTier::avx512;
    default:
      return CpuTier::baseline;
  }
}

}  // namespace

const char* name_of(Path path) {
  constexpr std::array names{"sse2", "sse41", "avx2", "avx512"};
  return names[static_cast<std::size_t>(path)];
}

bool skip_if(benchmark::State& state, const char* missing) {
  if (missing != nullptr) state.SkipWithError(missing);
  return missing != nullptr;
}

Transformer::Transformer(Path path) : path_(path), processor_(tier_of(path)) {
  kv_polarization_processor_module_initialize();
}

const char* Transformer::missing() const {
  if (path_ == Path::sse41 && !sse41_available()) return "this processor has no SSE4.1";
  if (path_ == Path::avx2 && !processor_.avx2_backend.usable()) {
    return "the AVX2 module is missing or refuses this machine";
  }
  if (path_ == Path::avx512 && !processor_.avx512_backend.usable()) {
    return "the AVX-512 module is missing or refuses this machine";
  }
  return nullptr;
}

void Transformer::operator()(const TransformRequest& request) {
  if (path_ == Path::sse2) {
    select_kernel(request, processor_.phase_views[0], false);
    return;
  }
  kv_polarization_processor_transform(
      &processor_, kv_polar_phase_0, request.input, 0, 0, static_cast<std::int32_t>(request.width),
      static_cast<std::int32_t>(request.height), request.bit_depth,
      static_cast<std::uint16_t>(request.output_max_int), request.normalized_stokes,
      request.intensity, request.stokes_s1, request.stokes_s2, request.azimuth, request.dolp);
}

}  // namespace kv::bench
