// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

// Written with SSE2, which every x86-64 processor has: the compiler does not find pmaddwd, which
// adds up the products of neighbouring samples as they lie, and without it the work takes twice as
// long.

#include <immintrin.h>

#include "toolkit/calibration/correction/coefficient_blocks.h"

namespace kv::polarization {
namespace {

__m128i load(const void* from) { return _mm_loadu_si128(static_cast<const __m128i*>(from)); }
void store(void* to, __m128i value) { _mm_storeu_si128(static_cast<__m128i*>(to), value); }

/// Samples of four cells of a row as 15-bit numbers.
class SampleScale {
 public:
  explicit SampleScale(int bit_depth)
      : left_(_mm_cvtsi32_si128(bit_depth > kSampleBits ? 0 : kSampleBits - bit_depth)),
        right_(_mm_cvtsi32_si128(bit_depth > kSampleBits ? bit_depth - kSampleBits : 0)) {}
  __m128i operator()(__m128i samples) const {
    return _mm_srl_epi16(_mm_sll_epi16(samples, left_), right_);
  }

 private:
  __m128i left_;
  __m128i right_;
};

/// A row of the matrix times the samples of four cells above black.
class MatrixRow {
 public:
  MatrixRow(const CoefficientScale& scale, std::size_t row, float factor)
      : upper_(pair(scale.common[row], scale.common[row + 1])),
        lower_(pair(scale.common[row + 2], scale.common[row + 3])),
        common_factor_(_mm_set1_ps(factor / kCommonSteps)),
        factor_(_mm_set1_ps(factor * scale.step)),
        place_(row * 4) {}

  __m128 multiply(__m128i upper, __m128i lower, const std::int16_t* quad) const {
    const __m128i common =
        _mm_add_epi32(_mm_madd_epi16(upper, upper_), _mm_madd_epi16(lower, lower_));
    const __m128i deviating = _mm_add_epi32(_mm_madd_epi16(upper, load(quad + place_)),
                                            _mm_madd_epi16(lower, load(quad + place_ + 8)));
    return _mm_add_ps(_mm_mul_ps(_mm_cvtepi32_ps(common), common_factor_),
                      _mm_mul_ps(_mm_cvtepi32_ps(deviating), factor_));
  }

 private:
  static __m128i pair(std::int16_t left, std::int16_t right) {
    return _mm_set_epi16(right, left, right, left, right, left, right, left);
  }

  __m128i upper_;
  __m128i lower_;
  __m128 common_factor_;
  __m128 factor_;
  std::size_t place_;
};

/// A row of four cells as unsigned samples, of numbers that are 32768 too low: packing holds those
/// at the ends of the range of signed ones.
__m128i pack(__m128 left, __m128 right) {
  const __m128i both = _mm_packs_epi32(_mm_cvtps_epi32(left), _mm_cvtps_epi32(right));
  const __m128i mixed = _mm_unpacklo_epi16(both, _mm_srli_si128(both, 8));
  return _mm_xor_si128(mixed, _mm_set1_epi16(-32768));
}

}  // namespace

bool correct_block(const std::uint16_t* upper, const std::uint16_t* lower,
                   const std::int16_t* block, const CoefficientScale& scale,
                   const OutputScale& output, std::uint16_t clip_level,
                   std::uint16_t* corrected_upper, std::uint16_t* corrected_lower) {
  const SampleScale in_15_bits(scale.bit_depth);
  const float factor = output.factor / scale.counts();
  const MatrixRow mean_row(scale, kMean, factor);
  const MatrixRow first_row(scale, kFirst, factor);
  const MatrixRow second_row(scale, kSecond, factor);
  const __m128 offset = _mm_set1_ps(output.pedestal - 32768);
  const __m128i below_clip = _mm_set1_epi16(static_cast<std::int16_t>(clip_level - 1));
  __m128i above = _mm_setzero_si128();
  for (std::size_t i = 0; i < kBlockColumns; i += 8) {
    const std::int16_t* quad = block + i * (kQuadSize / 8);
    const __m128i raw_upper = load(upper + i);
    const __m128i raw_lower = load(lower + i);
    above = _mm_or_si128(above, _mm_or_si128(_mm_subs_epu16(raw_upper, below_clip),
                                             _mm_subs_epu16(raw_lower, below_clip)));
    const __m128i light_upper = _mm_subs_epi16(in_15_bits(raw_upper), load(quad));
    const __m128i light_lower = _mm_subs_epi16(in_15_bits(raw_lower), load(quad + 8));
    const __m128 mean = _mm_add_ps(mean_row.multiply(light_upper, light_lower, quad), offset);
    const __m128 first = first_row.multiply(light_upper, light_lower, quad);
    const __m128 second = second_row.multiply(light_upper, light_lower, quad);
    store(corrected_upper + i, pack(_mm_add_ps(mean, first), _mm_add_ps(mean, second)));
    store(corrected_lower + i, pack(_mm_sub_ps(mean, second), _mm_sub_ps(mean, first)));
  }
  return _mm_movemask_epi8(_mm_cmpeq_epi8(above, _mm_setzero_si128())) != 0xFFFF;
}

}  // namespace kv::polarization
