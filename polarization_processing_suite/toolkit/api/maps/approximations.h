// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cmath>

namespace kv::polarization {

// Functions of the standard library keep compilers from computing several pixels at a time. These
// are free of branches and calls, and their polynomials are split into parts that a processor can
// overlap.

/// Added where a division by 0 may not be: far below any difference of samples but 0.
inline constexpr float kNearZero = 1e-30f;

/// atan2(y, x) / 2 in degrees, above -90 up to 90; 0 for (0, 0), whatever the signs of zeros.
/// Within 2e-5 degree: 7e-6 of the polynomial, which is the best of its degree (Remez), the rest by
/// rounding.
inline float half_atan2_degrees(float y, float x) {
  const float height = std::fabs(y);
  const float width = std::fabs(x);
  const float greater = height > width ? height : width;
  const float lesser = height > width ? width : height;
  const float t = lesser / (greater + kNearZero);
  const float t2 = t * t;
  const float t4 = t2 * t2;
  const float part01 = 28.6477784f - 9.54472287f * t2;
  const float part23 = 5.67452118f - 3.79107331f * t2;
  const float part456 = (2.28105029f - 0.962690096f * t2) + 0.195143533f * t4;
  const float octant = t * (part01 + t4 * (part23 + t4 * part456));
  const float quadrant = std::fabs((height > width ? 45.0f : 0.0f) - octant);
  const float half = std::fabs((x < 0 ? 90.0f : 0.0f) - quadrant);
  // An angle that is rounded to 90 degrees is on the side of 90, not of -90, and -0 on that of 0.
  return std::copysign(half, y + 1.4e-7f * width);
}

/// (1 - e^-x) / x for x from 0 up, 1 at 0; within 6e-6.
inline float mean_of_exp_minus(float x) {
  const float x2 = x * x;
  const float series =
      (1 - x * (1.0f / 2)) + x2 * ((1.0f / 6 - x * (1.0f / 24)) + x2 * (1.0f / 120));
  // e^-x as the 16th power of a fourth-degree Taylor polynomial. Beyond 16 it is next to nothing.
  const float y = (x < 16.0f ? x : 16.0f) * (1.0f / 16);
  const float y2 = y * y;
  const float root = (1 - y) + y2 * ((1.0f / 2 - y * (1.0f / 6)) + y2 * (1.0f / 24));
  const float root2 = root * root;
  const float root4 = root2 * root2;
  const float root8 = root4 * root4;
  const float quotient = (1 - root8 * root8) / x;
  return x < 0.3f ? series : quotient;
}

}  // namespace kv::polarization
