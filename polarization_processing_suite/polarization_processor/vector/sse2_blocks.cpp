// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "polarization_processor/vector/block.h"
#include "polarization_processor/vector/block_entries.h"
#include "polarization_processor/vector/float4.h"

namespace kv {
namespace {

struct Sse2Lanes {
  using Vector = Float4;

  static RowSamples<Float4> load(const std::uint16_t* samples) {
    const __m128i words = _mm_loadu_si128(reinterpret_cast<const __m128i*>(samples));
    const __m128 low = _mm_cvtepi32_ps(_mm_unpacklo_epi16(words, _mm_setzero_si128()));
    const __m128 high = _mm_cvtepi32_ps(_mm_unpackhi_epi16(words, _mm_setzero_si128()));
    const __m128 x2_x2_x4_x4 = _mm_shuffle_ps(low, high, _MM_SHUFFLE(0, 0, 2, 2));
    return {{_mm_shuffle_ps(low, x2_x2_x4_x4, _MM_SHUFFLE(2, 0, 2, 0))},  // x0 x2 x2 x4
            {_mm_shuffle_ps(low, low, _MM_SHUFFLE(3, 3, 1, 1))}};         // x1 x1 x3 x3
  }

  static void store(std::uint16_t* plane, Float4 bounded) {
    _mm_storel_epi64(reinterpret_cast<__m128i*>(plane), rounded_words(bounded));
  }
};

struct Sse2Form {
  template <BlockAxes axes>
  static void run(const TransformRequest& request, const BlockConstants& constants,
                  std::uint64_t count, BlockPosition position) {
    run_single_blocks<Sse2Lanes, axes>(request, constants, count, position);
  }
};

}  // namespace

namespace {

constinit const BlockEntries kEntries = block_entries<Sse2Form, Wanted::all>();

}  // namespace

constinit const BlockTable kSse2Blocks{kEntries, kEntries};

}  // namespace kv
