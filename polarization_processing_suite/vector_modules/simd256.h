// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <immintrin.h>

#include <cstdint>

#include "polarization_processor/vector/wide_blocks.h"

// AVX2, eight blocks at a time.
//
// Instructions work within halves of 128 bits, so that the blocks stand in the lanes in the order
// 0 1 4 5 | 2 3 6 7; the unpack instructions of the stores undo it.
namespace kv {
namespace {

struct Float8 {
  __m256 lanes;

  static Float8 zero() { return {_mm256_setzero_ps()}; }
  static Float8 all(float value) { return {_mm256_set1_ps(value)}; }
  static Float8 sign_bits() { return all(-0.0f); }
};

inline Float8 operator+(Float8 a, Float8 b) { return {_mm256_add_ps(a.lanes, b.lanes)}; }
inline Float8 operator-(Float8 a, Float8 b) { return {_mm256_sub_ps(a.lanes, b.lanes)}; }
inline Float8 operator*(Float8 a, Float8 b) { return {_mm256_mul_ps(a.lanes, b.lanes)}; }
inline Float8 operator/(Float8 a, Float8 b) { return {_mm256_div_ps(a.lanes, b.lanes)}; }

inline Float8 approx_reciprocal(Float8 x) { return {_mm256_rcp_ps(x.lanes)}; }
inline Float8 square_root(Float8 x) { return {_mm256_sqrt_ps(x.lanes)}; }
inline Float8 minimum(Float8 value, Float8 bound) {
  return {_mm256_min_ps(value.lanes, bound.lanes)};
}
inline Float8 maximum(Float8 value, Float8 bound) {
  return {_mm256_max_ps(value.lanes, bound.lanes)};
}

/// By the operator, as in float4.h.
inline Float8 less(Float8 a, Float8 b) {
#if defined(_MSC_VER)
  return {_mm256_cmp_ps(a.lanes, b.lanes, _CMP_LT_OS)};
#else
  return {reinterpret_cast<__m256>(a.lanes < b.lanes)};
#endif
}
inline Float8 magnitude(Float8 x) { return {_mm256_andnot_ps(Float8::sign_bits().lanes, x.lanes)}; }
inline Float8 with_sign_of(Float8 y, Float8 x) {
  return {_mm256_or_ps(x.lanes, _mm256_and_ps(y.lanes, Float8::sign_bits().lanes))};
}
inline Float8 select(Float8 mask, Float8 a, Float8 b) {
  return {_mm256_blendv_ps(b.lanes, a.lanes, mask.lanes)};
}
inline Float8 negated_unless(Float8 mask, Float8 x) {
  return {_mm256_xor_ps(x.lanes, _mm256_andnot_ps(mask.lanes, Float8::sign_bits().lanes))};
}
inline Float8 where_negative(Float8 y, Float8 x) {
  const __m256i negative = _mm256_srai_epi32(_mm256_castps_si256(y.lanes), 31);
  return {_mm256_and_ps(_mm256_castsi256_ps(negative), x.lanes)};
}

struct Int8 {
  __m256i lanes;
};

inline Int8 operator+(Int8 a, Int8 b) { return {_mm256_add_epi32(a.lanes, b.lanes)}; }
inline Int8 operator-(Int8 a, Int8 b) { return {_mm256_sub_epi32(a.lanes, b.lanes)}; }
inline Int8 low_half(Int8 x) { return {_mm256_blend_epi16(x.lanes, _mm256_setzero_si256(), 0xAA)}; }
inline Int8 high_half(Int8 x) { return {_mm256_srli_epi32(x.lanes, 16)}; }

inline Float8 to_float(Int8 x) { return {_mm256_cvtepi32_ps(x.lanes)}; }
inline Int8 rounded(Float8 x) { return {_mm256_cvtps_epi32(x.lanes)}; }

struct Words16 {
  __m256i lanes;

  static Words16 all(std::uint16_t value) { return {_mm256_set1_epi16(static_cast<short>(value))}; }
};

inline Words16 subtract_down_to_0(Words16 a, Words16 b) {
  return {_mm256_subs_epu16(a.lanes, b.lanes)};
}
inline Words16 minimum(Words16 a, Words16 b) { return {_mm256_min_epu16(a.lanes, b.lanes)}; }

struct Simd256 {
  static constexpr std::uint64_t kBlocks = 8;
  static constexpr Prefetch kPrefetch = Prefetch::next_row_pair;
  using Float = Float8;
  using Int = Int8;
  using Words = Words16;

  struct Pairs {
    Int8 x0_x1, x2_x3;
  };

  static Pairs load_pairs(const std::uint16_t* samples) {
    const __m256 blocks0123 = _mm256_castsi256_ps(load_words(samples).lanes);
    const __m256 blocks4567 = _mm256_castsi256_ps(load_words(samples + 16).lanes);
    const __m256 x0_x1 = _mm256_shuffle_ps(blocks0123, blocks4567, _MM_SHUFFLE(2, 0, 2, 0));
    const __m256 x2_x3 = _mm256_shuffle_ps(blocks0123, blocks4567, _MM_SHUFFLE(3, 1, 3, 1));
    return {{_mm256_castps_si256(x0_x1)}, {_mm256_castps_si256(x2_x3)}};
  }

  static void store_columns(std::uint16_t* plane, const Columns<Int8>& values) {
    const __m256i c0_c1 =
        _mm256_blend_epi16(values.column0.lanes, _mm256_slli_epi32(values.column1.lanes, 16), 0xAA);
    const Words16 c2_c2 = shuffled(
        {values.column2.lanes}, _mm_setr_epi8(0, 1, 0, 1, 4, 5, 4, 5, 8, 9, 8, 9, 12, 13, 12, 13));
    store_words(plane, {_mm256_unpacklo_epi32(c0_c1, c2_c2.lanes)});
    store_words(plane + 16, {_mm256_unpackhi_epi32(c0_c1, c2_c2.lanes)});
  }

  static void store_from_0(std::uint16_t* plane, const Columns<Int8>& values) {
    const __m256i c0_c2 = _mm256_packus_epi32(values.column0.lanes, values.column2.lanes);
    const __m256i c1_c2 = _mm256_packus_epi32(values.column1.lanes, values.column2.lanes);
    const __m256i c0_c1 = _mm256_unpacklo_epi16(c0_c2, c1_c2);
    const __m256i c2_c2 = _mm256_unpackhi_epi16(c0_c2, c1_c2);
    store_words(plane, {_mm256_unpacklo_epi32(c0_c1, c2_c2)});
    store_words(plane + 16, {_mm256_unpackhi_epi32(c0_c1, c2_c2)});
  }

  static void store_pairs(float* pairs, const Columns<Float8>& first,
                          const Columns<Float8>& second) {
    store_four_blocks(pairs, _mm256_unpacklo_ps(first.column0.lanes, second.column0.lanes),
                      _mm256_unpacklo_ps(first.column1.lanes, second.column1.lanes),
                      _mm256_unpacklo_ps(first.column2.lanes, second.column2.lanes));
    store_four_blocks(pairs + 32, _mm256_unpackhi_ps(first.column0.lanes, second.column0.lanes),
                      _mm256_unpackhi_ps(first.column1.lanes, second.column1.lanes),
                      _mm256_unpackhi_ps(first.column2.lanes, second.column2.lanes));
  }

  static Words16 load_words(const std::uint16_t* samples) {
    return {_mm256_loadu_si256(reinterpret_cast<const __m256i*>(samples))};
  }
  static void store_words(std::uint16_t* plane, Words16 words) {
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(plane), words.lanes);
  }

  /// x0 x2 x2 x2 and x1 x1 x3 x3 of each block.
  static Words16 even_words(Words16 x) {
    return shuffled(x, _mm_setr_epi8(0, 1, 4, 5, 4, 5, 4, 5, 8, 9, 12, 13, 12, 13, 12, 13));
  }
  static Words16 odd_words(Words16 x) {
    return shuffled(x, _mm_setr_epi8(2, 3, 2, 3, 6, 7, 6, 7, 10, 11, 10, 11, 14, 15, 14, 15));
  }

 private:
  static Words16 shuffled(Words16 x, __m128i order) {
    return {_mm256_shuffle_epi8(x.lanes, _mm256_broadcastsi128_si256(order))};
  }

  /// The pairs of a column come as those of blocks 0 and 1 in the lower half, of 2 and 3 in the
  /// upper one.
  static void store_four_blocks(float* to, __m256 column0, __m256 column1, __m256 column2) {
    const __m256d c0 = _mm256_castps_pd(column0);
    const __m256d c1 = _mm256_castps_pd(column1);
    const __m256d c2 = _mm256_castps_pd(column2);
    const __m256 front02 = _mm256_castpd_ps(_mm256_unpacklo_pd(c0, c1));
    const __m256 front13 = _mm256_castpd_ps(_mm256_unpackhi_pd(c0, c1));
    const __m256 back02 = _mm256_castpd_ps(_mm256_unpacklo_pd(c2, c2));
    const __m256 back13 = _mm256_castpd_ps(_mm256_unpackhi_pd(c2, c2));
    _mm256_storeu_ps(to, _mm256_permute2f128_ps(front02, back02, 0x20));
    _mm256_storeu_ps(to + 8, _mm256_permute2f128_ps(front13, back13, 0x20));
    _mm256_storeu_ps(to + 16, _mm256_permute2f128_ps(front02, back02, 0x31));
    _mm256_storeu_ps(to + 24, _mm256_permute2f128_ps(front13, back13, 0x31));
  }
};

}  // namespace
}  // namespace kv
