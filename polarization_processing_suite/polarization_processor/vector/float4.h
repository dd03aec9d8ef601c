// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <immintrin.h>

#include <cstdint>

// Files that are compiled for different instruction sets share what stands in this folder's
// headers. The linker would merge their copies, and the plain processor could get the code of a
// higher set. So the types of vectors and what is no template stand in unnamed namespaces, which
// keep each file's copy its own, and that of every template made with these types.
namespace kv {
namespace {

/// Four floats, or four masks of all ones or all zeros.
struct Float4 {
  __m128 lanes;

  static Float4 zero() { return {_mm_setzero_ps()}; }
  static Float4 all(float value) { return {_mm_set1_ps(value)}; }
  static Float4 all_bits(std::uint32_t bits) {
    return {_mm_castsi128_ps(_mm_set1_epi32(static_cast<int>(bits)))};
  }
};

inline Float4 operator+(Float4 a, Float4 b) { return {_mm_add_ps(a.lanes, b.lanes)}; }
inline Float4 operator-(Float4 a, Float4 b) { return {_mm_sub_ps(a.lanes, b.lanes)}; }
inline Float4 operator*(Float4 a, Float4 b) { return {_mm_mul_ps(a.lanes, b.lanes)}; }
inline Float4 operator/(Float4 a, Float4 b) { return {_mm_div_ps(a.lanes, b.lanes)}; }
inline Float4 operator&(Float4 a, Float4 b) { return {_mm_and_ps(a.lanes, b.lanes)}; }
inline Float4 operator^(Float4 a, Float4 b) { return {_mm_xor_ps(a.lanes, b.lanes)}; }

/// b where the mask is clear, else +0.
inline Float4 where_not(Float4 mask, Float4 b) { return {_mm_andnot_ps(mask.lanes, b.lanes)}; }

/// By the operator where there is one: g++ then knows the result for a mask, and a blend takes it
/// as it is.
inline Float4 less(Float4 a, Float4 b) {
#if defined(_MSC_VER)
  return {_mm_cmplt_ps(a.lanes, b.lanes)};
#else
  return {reinterpret_cast<__m128>(a.lanes < b.lanes)};
#endif
}
inline Float4 less_or_equal(Float4 a, Float4 b) { return {_mm_cmple_ps(a.lanes, b.lanes)}; }
inline Float4 equal(Float4 a, Float4 b) { return {_mm_cmpeq_ps(a.lanes, b.lanes)}; }
inline Float4 not_equal(Float4 a, Float4 b) { return {_mm_cmpneq_ps(a.lanes, b.lanes)}; }

inline Float4 approx_reciprocal(Float4 x) { return {_mm_rcp_ps(x.lanes)}; }
inline Float4 square_root(Float4 x) { return {_mm_sqrt_ps(x.lanes)}; }

/// The second operand where one of the two is a NaN, as everywhere in the planes.
inline Float4 minimum(Float4 value, Float4 bound) { return {_mm_min_ps(value.lanes, bound.lanes)}; }
inline Float4 maximum(Float4 value, Float4 bound) { return {_mm_max_ps(value.lanes, bound.lanes)}; }

/// Values of 0 to 65535, rounded in the thread's mode, as 16-bit words in the low and in the high
/// half. SSE2 packs signed numbers only: the range is moved down and back.
inline __m128i rounded_words(Float4 bounded) {
  const __m128i moved_down = _mm_sub_epi32(_mm_cvtps_epi32(bounded.lanes), _mm_set1_epi32(0x8000));
  return _mm_xor_si128(_mm_packs_epi32(moved_down, moved_down), _mm_set1_epi16(-0x8000));
}

/// The lanes of both in turn: four pairs.
inline void store_pairs(float* pairs, Float4 first, Float4 second) {
  _mm_storeu_ps(pairs, _mm_unpacklo_ps(first.lanes, second.lanes));
  _mm_storeu_ps(pairs + 4, _mm_unpackhi_ps(first.lanes, second.lanes));
}

}  // namespace
}  // namespace kv
