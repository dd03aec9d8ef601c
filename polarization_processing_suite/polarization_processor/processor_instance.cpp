// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "polarization_processor/processor_instance.h"

#include <cstddef>

namespace {

using kv::CoefficientSet;
using kv::PhaseView;

constexpr std::array<float, 4> kAllSamples{1, 1, 1, 1};
constexpr std::array<float, 4> kUnused{0, 0, 0, 0};

constexpr std::array<CoefficientSet, 4> kDefaultCoefficients{{
    {kAllSamples, {1, 0, 0, -1}, {0, -1, 1, 0}, kUnused},
    {kAllSamples, {0, -1, 1, 0}, {1, 0, 0, -1}, kUnused},
    {kAllSamples, {-1, 0, 0, 1}, {0, 1, -1, 0}, kUnused},
    {kAllSamples, {0, 1, -1, 0}, {-1, 0, 0, 1}, kUnused},
}};

/// Index into the coefficient store of the cell positions TL, TR, BL, BR: the mosaic of phase 0,
/// shifted by one row, by one row and one column, by one column.
constexpr std::array<std::array<std::size_t, 4>, 4> kMosaics{{
    {0, 3, 1, 2},
    {1, 2, 0, 3},
    {2, 1, 3, 0},
    {3, 0, 2, 1},
}};

}  // namespace

PolarizationProcessor::PolarizationProcessor(kv::CpuTier tier)
    : coefficient_store(kDefaultCoefficients), cpu_tier(tier) {
  for (std::size_t phase = 0; phase < kMosaics.size(); ++phase) {
    for (std::size_t position = 0; position < kMosaics[phase].size(); ++position) {
      phase_views[phase][position] = &coefficient_store[kMosaics[phase][position]];
    }
  }
}

const kv::PhaseView& PolarizationProcessor::view_of(std::int32_t polar_phase) const {
  return phase_views[polar_phase >= 1 && polar_phase <= 3 ? static_cast<std::size_t>(polar_phase)
                                                          : 0];
}

const kv::VectorBackend* PolarizationProcessor::backend() const {
  const kv::VectorBackend* own = nullptr;
  if (cpu_tier == kv::CpuTier::avx512) own = &avx512_backend;
  if (cpu_tier == kv::CpuTier::avx2) own = &avx2_backend;
  return own != nullptr && own->usable() ? own : nullptr;
}
