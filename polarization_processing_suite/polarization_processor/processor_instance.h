// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <array>
#include <cstdint>

#include "platform/cpu_features.h"
#include "polarization_processor/records/coefficient_set.h"
#include "polarization_processor/routing/vector_backend.h"

/// The weights of one camera, behind the public handle. Its views point into itself: it is never
/// copied or moved.
struct PolarizationProcessor {
  explicit PolarizationProcessor(kv::CpuTier tier);
  PolarizationProcessor(const PolarizationProcessor&) = delete;
  PolarizationProcessor& operator=(const PolarizationProcessor&) = delete;

  /// Every phase but 1, 2 and 3, a negative one included, is seen as phase 0.
  const kv::PhaseView& view_of(std::int32_t polar_phase) const;

  /// The module of the instance's own tier, null if it is not usable. There is no chain of tiers.
  const kv::VectorBackend* backend() const;

  /// By the polarizer of the own pixel: 0, 45, 90, 135 degrees.
  std::array<kv::CoefficientSet, 4> coefficient_store;
  /// By the polarizer of the frame's top-left pixel.
  std::array<kv::PhaseView, 4> phase_views;
  kv::CpuTier cpu_tier;
  /// Both are bound on every processor, and torn down in the reverse order.
  kv::VectorBackend avx512_backend{kv::kAvx512Module};
  kv::VectorBackend avx2_backend{kv::kAvx2Module};
};
