// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <immintrin.h>

#include <cstdint>

#include "polarization_processor/vector/float4.h"
#include "polarization_processor/vector/wide_blocks.h"

// SSE4.1, four blocks at a time.
namespace kv {
namespace {

struct Int4 {
  __m128i lanes;
};

inline Int4 operator+(Int4 a, Int4 b) { return {_mm_add_epi32(a.lanes, b.lanes)}; }
inline Int4 operator-(Int4 a, Int4 b) { return {_mm_sub_epi32(a.lanes, b.lanes)}; }
inline Int4 low_half(Int4 x) { return {_mm_blend_epi16(x.lanes, _mm_setzero_si128(), 0xAA)}; }
inline Int4 high_half(Int4 x) { return {_mm_srli_epi32(x.lanes, 16)}; }

inline Float4 to_float(Int4 x) { return {_mm_cvtepi32_ps(x.lanes)}; }
/// In the thread's rounding mode.
inline Int4 rounded(Float4 x) { return {_mm_cvtps_epi32(x.lanes)}; }

inline Float4 magnitude(Float4 x) { return where_not(Float4::all_bits(kSignBit), x); }
/// x of no sign with that of y.
inline Float4 with_sign_of(Float4 y, Float4 x) {
  return {_mm_or_ps(x.lanes, _mm_and_ps(y.lanes, Float4::all_bits(kSignBit).lanes))};
}
inline Float4 select(Float4 mask, Float4 a, Float4 b) {
  return {_mm_blendv_ps(b.lanes, a.lanes, mask.lanes)};
}
inline Float4 negated_unless(Float4 mask, Float4 x) {
  return x ^ where_not(mask, Float4::all_bits(kSignBit));
}
/// x where the sign bit of y is set, else +0.
inline Float4 where_negative(Float4 y, Float4 x) {
  return {_mm_and_ps(_mm_castsi128_ps(_mm_srai_epi32(_mm_castps_si128(y.lanes), 31)), x.lanes)};
}

struct Words8 {
  __m128i lanes;

  static Words8 all(std::uint16_t value) { return {_mm_set1_epi16(static_cast<short>(value))}; }
};

inline Words8 subtract_down_to_0(Words8 a, Words8 b) { return {_mm_subs_epu16(a.lanes, b.lanes)}; }
inline Words8 minimum(Words8 a, Words8 b) { return {_mm_min_epu16(a.lanes, b.lanes)}; }

struct Simd128 {
  static constexpr std::uint64_t kBlocks = 4;
  static constexpr Prefetch kPrefetch = Prefetch::none;
  using Float = Float4;
  using Int = Int4;
  using Words = Words8;

  struct Pairs {
    Int4 x0_x1, x2_x3;
  };

  static Pairs load_pairs(const std::uint16_t* samples) {
    const __m128 blocks01 = _mm_castsi128_ps(load_words(samples).lanes);
    const __m128 blocks23 = _mm_castsi128_ps(load_words(samples + 8).lanes);
    return {{_mm_castps_si128(_mm_shuffle_ps(blocks01, blocks23, _MM_SHUFFLE(2, 0, 2, 0)))},
            {_mm_castps_si128(_mm_shuffle_ps(blocks01, blocks23, _MM_SHUFFLE(3, 1, 3, 1)))}};
  }

  static void store_columns(std::uint16_t* plane, const Columns<Int4>& values) {
    const __m128i c0_c1 =
        _mm_blend_epi16(values.column0.lanes, _mm_slli_epi32(values.column1.lanes, 16), 0xAA);
    const __m128i c2_c2 = _mm_shuffle_epi8(
        values.column2.lanes, _mm_setr_epi8(0, 1, 0, 1, 4, 5, 4, 5, 8, 9, 8, 9, 12, 13, 12, 13));
    store_words(plane, {_mm_unpacklo_epi32(c0_c1, c2_c2)});
    store_words(plane + 8, {_mm_unpackhi_epi32(c0_c1, c2_c2)});
  }

  static void store_from_0(std::uint16_t* plane, const Columns<Int4>& values) {
    const __m128i c0_c2 = _mm_packus_epi32(values.column0.lanes, values.column2.lanes);
    const __m128i c1_c2 = _mm_packus_epi32(values.column1.lanes, values.column2.lanes);
    const __m128i c0_c1 = _mm_unpacklo_epi16(c0_c2, c1_c2);
    const __m128i c2_c2 = _mm_unpackhi_epi16(c0_c2, c1_c2);
    store_words(plane, {_mm_unpacklo_epi32(c0_c1, c2_c2)});
    store_words(plane + 8, {_mm_unpackhi_epi32(c0_c1, c2_c2)});
  }

  static void store_pairs(float* pairs, const Columns<Float4>& first,
                          const Columns<Float4>& second) {
    const auto store_two_blocks = [&](float* to, auto unpack) {
      const __m128 column0 = unpack(first.column0.lanes, second.column0.lanes);
      const __m128 column1 = unpack(first.column1.lanes, second.column1.lanes);
      const __m128 column2 = unpack(first.column2.lanes, second.column2.lanes);
      _mm_storeu_ps(to, _mm_movelh_ps(column0, column1));
      _mm_storeu_ps(to + 4, _mm_movelh_ps(column2, column2));
      _mm_storeu_ps(to + 8, _mm_movehl_ps(column1, column0));
      _mm_storeu_ps(to + 12, _mm_movehl_ps(column2, column2));
    };
    store_two_blocks(pairs, [](__m128 a, __m128 b) { return _mm_unpacklo_ps(a, b); });
    store_two_blocks(pairs + 16, [](__m128 a, __m128 b) { return _mm_unpackhi_ps(a, b); });
  }

  static Words8 load_words(const std::uint16_t* samples) {
    return {_mm_loadu_si128(reinterpret_cast<const __m128i*>(samples))};
  }
  static void store_words(std::uint16_t* plane, Words8 words) {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(plane), words.lanes);
  }

  /// x0 x2 x2 x2 and x1 x1 x3 x3 of each block.
  static Words8 even_words(Words8 x) {
    return {_mm_shuffle_epi8(x.lanes,
                             _mm_setr_epi8(0, 1, 4, 5, 4, 5, 4, 5, 8, 9, 12, 13, 12, 13, 12, 13))};
  }
  static Words8 odd_words(Words8 x) {
    return {_mm_shuffle_epi8(
        x.lanes, _mm_setr_epi8(2, 3, 2, 3, 6, 7, 6, 7, 10, 11, 10, 11, 14, 15, 14, 15))};
  }
};

}  // namespace
}  // namespace kv
