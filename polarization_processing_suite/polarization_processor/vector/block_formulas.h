// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>

#include "polarization_processor/pixel/polarization_constants.h"
#include "polarization_processor/pixel/stokes.h"

// The formulas of a block, lane by lane, for a vector type V. They follow those of a single pixel
// step by step, but for the factor of S0, the scaling by a reciprocal and the last step of azimuth.
namespace kv {

/// The columns of a row, parted by parity: lane i of the two vectors holds the even and the odd
/// column of the neighbourhood of column i.
template <class V>
struct RowSamples {
  V even, odd;
};

template <class V>
struct Difference {
  V minuend, subtrahend;
};

template <class V>
V difference(const Difference<V>& operands) {
  return operands.minuend - operands.subtrahend;
}

/// S1 of one row of a block. `outer` is the upper row for the upper pixels and the row below for
/// the lower ones; `lower` is the block's lower row, the neighbour of both.
template <std::uint32_t phase, class V>
Difference<V> s1_difference(RowSamples<V> outer, RowSamples<V> lower) {
  if constexpr (phase == 0) return {outer.even, lower.odd};
  if constexpr (phase == 1) return {lower.even, outer.odd};
  if constexpr (phase == 2) return {lower.odd, outer.even};
  if constexpr (phase == 3) return {outer.odd, lower.even};
}

/// A shift of the mosaic by one row exchanges S1 and S2.
template <std::uint32_t phase, class V>
Difference<V> s2_difference(RowSamples<V> outer, RowSamples<V> lower) {
  return s1_difference<phase ^ 1>(outer, lower);
}

/// Stokes values of one row of a block.
template <std::uint32_t phase, class V>
Stokes<V> block_stokes(RowSamples<V> outer, RowSamples<V> lower, V half_factor) {
  const V sum = (lower.even + outer.odd) + (lower.odd + outer.even);
  return {sum * half_factor, difference(s1_difference<phase>(outer, lower)),
          difference(s2_difference<phase>(outer, lower))};
}

template <class V>
V atan_poly(V x) {
  return x * (V::all(kAtanLinear) + V::all(kAtanCubic) * (x * x));
}

template <class V>
V stokes_angle(V s1, V s2) {
  const V zero = V::zero();
  const V sign = V::all_bits(kSignBit);
  const V near_axis = less(where_not(sign, s2), where_not(sign, s1));
  const V ratio = s2 * approx_reciprocal(s1);
  const V inverse_ratio = approx_reciprocal(ratio);

  const V right_angle = V::all(kHalfPi) ^ where_not(less(zero, s2), sign);
  const V straight_angle = V::all(kPi) ^ where_not(less_or_equal(zero, s2), sign);

  const V arc_near_axis = atan_poly(ratio) + where_not(less(zero, s1), straight_angle);
  const V arc_off_axis = (zero - atan_poly(inverse_ratio)) + right_angle;
  const V arc = (arc_near_axis & near_axis) + where_not(near_axis, arc_off_axis);

  const V s1_differs_from_zero = not_equal(s1, zero);
  const V s2_is_zero = equal(s2, zero);
  return (arc & s1_differs_from_zero) +
         where_not(s2_is_zero, where_not(s1_differs_from_zero, right_angle));
}

template <class V>
V clamp(V value, V ceiling) {
  return maximum(minimum(value, ceiling), V::zero());
}

/// 0 to 180.
template <class V>
V azimuth_degrees(V s1, V s2) {
  return stokes_angle(s1, s2) * V::all(kDegreesOfAzimuth) + V::all(kAzimuthOffset);
}

/// In units of the plane.
template <class V>
V dolp_value(const Stokes<V>& stokes, V output_ceiling) {
  const V length = square_root(stokes.s1 * stokes.s1 + stokes.s2 * stokes.s2);
  const V s0_is_zero = equal(stokes.s0, V::zero());
  return where_not(s0_is_zero, length * approx_reciprocal(stokes.s0)) * output_ceiling;
}

}  // namespace kv
