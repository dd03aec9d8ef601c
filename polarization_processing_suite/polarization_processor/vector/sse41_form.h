// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "polarization_processor/vector/block.h"
#include "polarization_processor/vector/flatten.h"
#include "polarization_processor/vector/simd128.h"

namespace kv {
namespace {

struct Sse41Lanes {
  using Vector = Float4;

  /// Sample x4 does not reach a lane: the fourth lane repeats the third.
  static RowSamples<Float4> load(const std::uint16_t* samples) {
    const __m128i words = _mm_loadu_si128(reinterpret_cast<const __m128i*>(samples));
    const __m128i x0_x2_x2_x2 = _mm_shufflelo_epi16(words, _MM_SHUFFLE(2, 2, 2, 0));
    const __m128i x1_x1_x3_x3 = _mm_shufflelo_epi16(words, _MM_SHUFFLE(3, 3, 1, 1));
    return {{_mm_cvtepi32_ps(_mm_cvtepu16_epi32(x0_x2_x2_x2))},
            {_mm_cvtepi32_ps(_mm_cvtepu16_epi32(x1_x1_x3_x3))}};
  }

  static void store(std::uint16_t* plane, Float4 bounded) {
    const __m128i values = _mm_cvtps_epi32(bounded.lanes);
    _mm_storel_epi64(reinterpret_cast<__m128i*>(plane),
                     _mm_packus_epi32(values, _mm_setzero_si128()));
  }
};

/// Four blocks at a time; fewer than that one by one.
struct Sse41Form {
  template <BlockAxes axes>
  KV_FLATTEN static void run(const TransformRequest& request, const BlockConstants& constants,
                             std::uint64_t count, BlockPosition position) {
    if (count < Simd128::kBlocks) {
      run_single_blocks<Sse41Lanes, axes>(request, constants, count, position);
    } else {
      run_wide_steps<Simd128, axes>(request, constants, count, position);
    }
  }
};

}  // namespace
}  // namespace kv
