// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "polarization_processor/vector/block_formulas.h"

// The formulas of several blocks at a time, to the same bits as those of one block. What is saved
// rests on the values that can occur: S1 and S2 are differences of 16-bit samples, converted from
// integers and so never -0.
namespace kv {

/// Where S1 = S2 = 0 the ratio is a NaN. There the minimum, which gives its second operand, makes
/// the arc the right angle that the base takes away again, so that the angle is 0. Everywhere else
/// the polynomial is below 1, and
/// - a ratio that is infinite, for S1 = 0, gives an inverse ratio and an arc of 0, and so the right
///   angle alone;
/// - off the axis S2 differs from 0, so that its sign bit is the sign of both base angles;
/// - the arc off the axis is subtracted from the right angle, and one polynomial serves both arcs.
template <class V>
V wide_stokes_angle(V s1, V s2) {
  const auto near_axis = less(magnitude(s2), magnitude(s1));
  const V ratio = s2 * approx_reciprocal(s1);
  const V polynomial = atan_poly(select(near_axis, ratio, approx_reciprocal(ratio)));
  const V arc = minimum(polynomial, V::all(kHalfPi));
  const V base = select(near_axis, where_negative(s1, V::all(kPi)), V::all(kHalfPi));
  return with_sign_of(s2, base) + negated_unless(near_axis, arc);
}

/// Above 0: where S2 < 0 the angle is greater than -pi by 1 / 65535 or more. Up to 180, or more by
/// rounding.
template <class V>
V wide_azimuth_degrees(V s1, V s2) {
  return wide_stokes_angle(s1, s2) * V::all(kDegreesOfAzimuth) + V::all(kAzimuthOffset);
}

/// In units of the plane; a NaN where S0 = 0.
template <class V>
V wide_dolp(const Stokes<V>& stokes, V output_ceiling) {
  const V length = square_root(stokes.s1 * stokes.s1 + stokes.s2 * stokes.s2);
  return (length * approx_reciprocal(stokes.s0)) * output_ceiling;
}

}  // namespace kv
