// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <immintrin.h>

#include <bit>
#include <cstdint>

#include "polarization_processor/pixel/polarization_constants.h"
#include "polarization_processor/pixel/stokes.h"

namespace kv {

/// The processor's approximate reciprocal, relative error at most 1.5 * 2^-12. Its low bits are the
/// processor maker's, and so are those of azimuth and DoLP.
inline float approx_reciprocal(float x) { return _mm_cvtss_f32(_mm_rcp_ss(_mm_set_ss(x))); }

inline float square_root(float x) { return _mm_cvtss_f32(_mm_sqrt_ss(_mm_set_ss(x))); }

inline float magnitude(float x) {
  return std::bit_cast<float>(std::bit_cast<std::uint32_t>(x) & ~kSignBit);
}

/// x where the condition holds, else +0. A bit mask, because a multiplication by 0 would let an
/// infinity or a NaN of an arc that is not wanted through.
inline float where(bool condition, float x) {
  const std::uint32_t mask = condition ? ~std::uint32_t{0} : 0;
  return std::bit_cast<float>(std::bit_cast<std::uint32_t>(x) & mask);
}

/// x where the condition holds, else -x.
inline float negated_unless(bool condition, float x) {
  return std::bit_cast<float>(std::bit_cast<std::uint32_t>(x) ^ (condition ? 0 : kSignBit));
}

inline float atan_poly(float x) { return x * (kAtanLinear + kAtanCubic * (x * x)); }

/// Angle of the vector (S1, S2) in radians, -pi to pi. Near the S1 axis it is the arc of the ratio
/// S2/S1, elsewhere the arc of the ratio's own reciprocal; both are evaluated and one is masked
/// away.
inline float stokes_angle(float s1, float s2) {
  const bool near_axis = magnitude(s2) < magnitude(s1);
  const float ratio = s2 * approx_reciprocal(s1);
  const float inverse_ratio = approx_reciprocal(ratio);

  const float right_angle = negated_unless(0.0f < s2, kHalfPi);
  const float straight_angle = negated_unless(0.0f <= s2, kPi);

  const float arc_near_axis = atan_poly(ratio) + where(!(0.0f < s1), straight_angle);
  const float arc_off_axis = (0.0f - atan_poly(inverse_ratio)) + right_angle;
  const float arc = where(near_axis, arc_near_axis) + where(!near_axis, arc_off_axis);

  const bool s1_differs_from_zero = s1 != 0.0f;
  const bool s2_is_zero = s2 == 0.0f;
  return where(s1_differs_from_zero, arc) +
         where(!s1_differs_from_zero && !s2_is_zero, right_angle);
}

/// Azimuth in units of its plane, before the clamp.
inline float azimuth_value(float s1, float s2, float output_max) {
  const float degrees = stokes_angle(s1, s2) * kDegreesOfAzimuth + float{kAzimuthOffset};
  return (degrees * output_max) / float{kAzimuthRange};
}

/// Degree of linear polarization in units of its plane, before the clamp.
inline float dolp_value(const Stokes<float>& stokes, float output_max) {
  const float length = square_root(stokes.s1 * stokes.s1 + stokes.s2 * stokes.s2);
  return where(stokes.s0 != 0.0f, length * approx_reciprocal(stokes.s0)) * output_max;
}

}  // namespace kv
