// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <immintrin.h>

#include <cstdint>

#include "polarization_processor/vector/wide_blocks.h"

// AVX-512F, DQ and BW, sixteen blocks at a time.
//
// Instructions work within quarters of 128 bits, so that the blocks stand in the lanes in the order
// 0 1 8 9 | 2 3 10 11 | 4 5 12 13 | 6 7 14 15; the unpack instructions of the stores undo it.
namespace kv {
namespace {

struct Mask16 {
  __mmask16 lanes;
};

struct Float16 {
  __m512 lanes;

  static Float16 zero() { return {_mm512_setzero_ps()}; }
  static Float16 all(float value) { return {_mm512_set1_ps(value)}; }
  static Float16 sign_bits() { return all(-0.0f); }
};

inline Float16 operator+(Float16 a, Float16 b) { return {_mm512_add_ps(a.lanes, b.lanes)}; }
inline Float16 operator-(Float16 a, Float16 b) { return {_mm512_sub_ps(a.lanes, b.lanes)}; }
inline Float16 operator*(Float16 a, Float16 b) { return {_mm512_mul_ps(a.lanes, b.lanes)}; }
inline Float16 operator/(Float16 a, Float16 b) { return {_mm512_div_ps(a.lanes, b.lanes)}; }

/// AVX-512 has an approximate reciprocal of its own, whose bits are not those of rcpps.
inline Float16 approx_reciprocal(Float16 x) {
  const __m256 low = _mm256_rcp_ps(_mm512_castps512_ps256(x.lanes));
  const __m256 high = _mm256_rcp_ps(_mm512_extractf32x8_ps(x.lanes, 1));
  return {_mm512_insertf32x8(_mm512_castps256_ps512(low), high, 1)};
}
inline Float16 square_root(Float16 x) { return {_mm512_sqrt_ps(x.lanes)}; }
inline Float16 minimum(Float16 value, Float16 bound) {
  return {_mm512_min_ps(value.lanes, bound.lanes)};
}
inline Float16 maximum(Float16 value, Float16 bound) {
  return {_mm512_max_ps(value.lanes, bound.lanes)};
}

inline Mask16 less(Float16 a, Float16 b) {
  return {_mm512_cmp_ps_mask(a.lanes, b.lanes, _CMP_LT_OS)};
}
inline Float16 magnitude(Float16 x) {
  return {_mm512_andnot_ps(Float16::sign_bits().lanes, x.lanes)};
}
inline Float16 with_sign_of(Float16 y, Float16 x) {
  return {_mm512_or_ps(x.lanes, _mm512_and_ps(y.lanes, Float16::sign_bits().lanes))};
}
inline Float16 select(Mask16 mask, Float16 a, Float16 b) {
  return {_mm512_mask_blend_ps(mask.lanes, b.lanes, a.lanes)};
}
inline Float16 negated_unless(Mask16 mask, Float16 x) {
  return {
      _mm512_mask_xor_ps(x.lanes, _knot_mask16(mask.lanes), x.lanes, Float16::sign_bits().lanes)};
}
inline Float16 where_negative(Float16 y, Float16 x) {
  return {_mm512_maskz_mov_ps(_mm512_movepi32_mask(_mm512_castps_si512(y.lanes)), x.lanes)};
}

struct Int16 {
  __m512i lanes;
};

inline Int16 operator+(Int16 a, Int16 b) { return {_mm512_add_epi32(a.lanes, b.lanes)}; }
inline Int16 operator-(Int16 a, Int16 b) { return {_mm512_sub_epi32(a.lanes, b.lanes)}; }
inline Int16 low_half(Int16 x) { return {_mm512_and_si512(x.lanes, _mm512_set1_epi32(0xFFFF))}; }
inline Int16 high_half(Int16 x) { return {_mm512_srli_epi32(x.lanes, 16)}; }

inline Float16 to_float(Int16 x) { return {_mm512_cvtepi32_ps(x.lanes)}; }
inline Int16 rounded(Float16 x) { return {_mm512_cvtps_epi32(x.lanes)}; }

struct Words32 {
  __m512i lanes;

  static Words32 all(std::uint16_t value) { return {_mm512_set1_epi16(static_cast<short>(value))}; }
};

inline Words32 subtract_down_to_0(Words32 a, Words32 b) {
  return {_mm512_subs_epu16(a.lanes, b.lanes)};
}
inline Words32 minimum(Words32 a, Words32 b) { return {_mm512_min_epu16(a.lanes, b.lanes)}; }

struct Simd512 {
  static constexpr std::uint64_t kBlocks = 16;
  static constexpr Prefetch kPrefetch = Prefetch::next_row_pair_and_stores;
  using Float = Float16;
  using Int = Int16;
  using Words = Words32;

  struct Pairs {
    Int16 x0_x1, x2_x3;
  };

  static Pairs load_pairs(const std::uint16_t* samples) {
    const __m512 blocks0to7 = _mm512_castsi512_ps(load_words(samples).lanes);
    const __m512 blocks8to15 = _mm512_castsi512_ps(load_words(samples + 32).lanes);
    const __m512 x0_x1 = _mm512_shuffle_ps(blocks0to7, blocks8to15, _MM_SHUFFLE(2, 0, 2, 0));
    const __m512 x2_x3 = _mm512_shuffle_ps(blocks0to7, blocks8to15, _MM_SHUFFLE(3, 1, 3, 1));
    return {{_mm512_castps_si512(x0_x1)}, {_mm512_castps_si512(x2_x3)}};
  }

  static void store_columns(std::uint16_t* plane, const Columns<Int16>& values) {
    constexpr __mmask32 kHighHalves = 0xAAAAAAAA;
    const __m512i c0_c1 = _mm512_mask_blend_epi16(kHighHalves, values.column0.lanes,
                                                  _mm512_slli_epi32(values.column1.lanes, 16));
    const Words32 c2_c2 = shuffled(
        {values.column2.lanes}, _mm_setr_epi8(0, 1, 0, 1, 4, 5, 4, 5, 8, 9, 8, 9, 12, 13, 12, 13));
    store_words(plane, {_mm512_unpacklo_epi32(c0_c1, c2_c2.lanes)});
    store_words(plane + 32, {_mm512_unpackhi_epi32(c0_c1, c2_c2.lanes)});
  }

  static void store_from_0(std::uint16_t* plane, const Columns<Int16>& values) {
    const __m512i c0_c2 = _mm512_packus_epi32(values.column0.lanes, values.column2.lanes);
    const __m512i c1_c2 = _mm512_packus_epi32(values.column1.lanes, values.column2.lanes);
    const __m512i c0_c1 = _mm512_unpacklo_epi16(c0_c2, c1_c2);
    const __m512i c2_c2 = _mm512_unpackhi_epi16(c0_c2, c1_c2);
    store_words(plane, {_mm512_unpacklo_epi32(c0_c1, c2_c2)});
    store_words(plane + 32, {_mm512_unpackhi_epi32(c0_c1, c2_c2)});
  }

  static void store_pairs(float* pairs, const Columns<Float16>& first,
                          const Columns<Float16>& second) {
    store_eight_blocks(pairs, _mm512_unpacklo_ps(first.column0.lanes, second.column0.lanes),
                       _mm512_unpacklo_ps(first.column1.lanes, second.column1.lanes),
                       _mm512_unpacklo_ps(first.column2.lanes, second.column2.lanes));
    store_eight_blocks(pairs + 64, _mm512_unpackhi_ps(first.column0.lanes, second.column0.lanes),
                       _mm512_unpackhi_ps(first.column1.lanes, second.column1.lanes),
                       _mm512_unpackhi_ps(first.column2.lanes, second.column2.lanes));
  }

  static Words32 load_words(const std::uint16_t* samples) { return {_mm512_loadu_si512(samples)}; }
  static void store_words(std::uint16_t* plane, Words32 words) {
    _mm512_storeu_si512(plane, words.lanes);
  }

  /// x0 x2 x2 x2 and x1 x1 x3 x3 of each block.
  static Words32 even_words(Words32 x) {
    return shuffled(x, _mm_setr_epi8(0, 1, 4, 5, 4, 5, 4, 5, 8, 9, 12, 13, 12, 13, 12, 13));
  }
  static Words32 odd_words(Words32 x) {
    return shuffled(x, _mm_setr_epi8(2, 3, 2, 3, 6, 7, 6, 7, 10, 11, 10, 11, 14, 15, 14, 15));
  }

 private:
  static Words32 shuffled(Words32 x, __m128i order) {
    return {_mm512_shuffle_epi8(x.lanes, _mm512_broadcast_i32x4(order))};
  }

  /// The pairs of a column come as those of blocks 0 and 1 in the lowest quarter, of 2 and 3 in the
  /// next, and so on.
  static void store_eight_blocks(float* to, __m512 column0, __m512 column1, __m512 column2) {
    const __m512d c0 = _mm512_castps_pd(column0);
    const __m512d c1 = _mm512_castps_pd(column1);
    const __m512d c2 = _mm512_castps_pd(column2);
    const __m512d front_even = _mm512_unpacklo_pd(c0, c1);  // Blocks 0, 2, 4, 6: columns 0 and 1.
    const __m512d front_odd = _mm512_unpackhi_pd(c0, c1);   // Blocks 1, 3, 5, 7.
    const __m512d back_even = _mm512_unpacklo_pd(c2, c2);   // Columns 2 and 3.
    const __m512d back_odd = _mm512_unpackhi_pd(c2, c2);

    const __m512i lower_half = _mm512_setr_epi64(0, 1, 8, 9, 2, 3, 10, 11);
    const __m512i upper_half = _mm512_setr_epi64(4, 5, 12, 13, 6, 7, 14, 15);
    const __m512d blocks02 = _mm512_permutex2var_pd(front_even, lower_half, back_even);
    const __m512d blocks13 = _mm512_permutex2var_pd(front_odd, lower_half, back_odd);
    const __m512d blocks46 = _mm512_permutex2var_pd(front_even, upper_half, back_even);
    const __m512d blocks57 = _mm512_permutex2var_pd(front_odd, upper_half, back_odd);
    store_two_blocks(to, _mm512_shuffle_f64x2(blocks02, blocks13, 0x44));
    store_two_blocks(to + 16, _mm512_shuffle_f64x2(blocks02, blocks13, 0xEE));
    store_two_blocks(to + 32, _mm512_shuffle_f64x2(blocks46, blocks57, 0x44));
    store_two_blocks(to + 48, _mm512_shuffle_f64x2(blocks46, blocks57, 0xEE));
  }

  static void store_two_blocks(float* to, __m512d pairs) {
    _mm512_storeu_ps(to, _mm512_castpd_ps(pairs));
  }
};

}  // namespace
}  // namespace kv
