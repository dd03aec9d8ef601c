// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <array>
#include <cstddef>

namespace kv::polarization {

/// The samples of a 2x2 neighbourhood by their places. Own and diagonal, right and lower stand at
/// right angles.
enum CellPlace : std::size_t { own_place, right_place, lower_place, diagonal_place };

/// Its partner at right angles.
constexpr std::size_t opposite(std::size_t place) { return 3 - place; }

/// What is made of a neighbourhood whatever its polarizers: S0 and the differences a = own -
/// diagonal, b = right - lower. One of the two is S1 or -S1, the other one S2 or -S2.
inline constexpr std::array<std::array<float, 4>, 3> kContrasts{
    {{0.5f, 0.5f, 0.5f, 0.5f}, {1, 0, 0, -1}, {0, 1, -1, 0}}};

/// Variances and covariances of S0, a and b.
template <class T>
struct Moments {
  T s0_s0, a_a, b_b, s0_a, s0_b, a_b;
};

/// Of four independent samples.
template <class T>
Moments<T> moments_of(T own, T right, T lower, T diagonal) {
  const T a_a = own + diagonal;
  const T b_b = right + lower;
  return {(a_a + b_b) / 4, a_a, b_b, (own - diagonal) / 2, (right - lower) / 2, T(0)};
}

/// Of a neighbourhood whose sample at one place was made of the three others, by the other three's
/// variances. Each sample was then multiplied by its gain.
template <class T>
Moments<T> rescued_moments(std::size_t rescued, const std::array<T, 4>& variances,
                           const std::array<T, 4>& gains) {
  Moments<T> sum{};
  for (std::size_t place = 0; place < 4; ++place) {
    if (place == rescued) continue;
    const T sign = place == opposite(rescued) ? T(-1) : T(1);
    std::array<T, 3> weights{};
    for (std::size_t i = 0; i < 3; ++i) {
      weights[i] =
          kContrasts[i][place] * gains[place] + sign * kContrasts[i][rescued] * gains[rescued];
    }
    const auto [s0, a, b] = weights;
    const T variance = variances[place];
    sum.s0_s0 += s0 * s0 * variance;
    sum.a_a += a * a * variance;
    sum.b_b += b * b * variance;
    sum.s0_a += s0 * a * variance;
    sum.s0_b += s0 * b * variance;
    sum.a_b += a * b * variance;
  }
  return sum;
}

/// Variances of the polarization as a vector of the length DoLP at twice the angle.
template <class T>
struct VectorVariance {
  T along;   ///< its direction: that of DoLP
  T across;  ///< it: that of 2 DoLP times the angle in radians
};

/// By first-order propagation, with all covariances: DoLP falls as S0 rises, and the bright sample
/// of strongly polarized light raises both. Leaving S0's part out tells 41 per cent too much at
/// DoLP 1. Without polarization any direction will do; S0 must be above 0.
template <class T>
VectorVariance<T> propagate(T s0, T a, T b, const Moments<T>& moments) {
  const T near_zero = T(1e-30);  // turns 0 / 0 into the direction of a
  const T a2 = a * a + near_zero;
  const T b2 = b * b;
  const T length2 = a2 + b2;
  const T inverse = T(1) / length2;
  const T cos2 = a2 * inverse;
  const T sin2 = b2 * inverse;
  const T both = 2 * (a * b * inverse) * moments.a_b;
  const T scale = T(1) / s0;
  const T with_s0 = 2 * scale * (a * moments.s0_a + b * moments.s0_b);
  const T of_s0 = length2 * scale * scale * moments.s0_s0;
  const T along = cos2 * moments.a_a + sin2 * moments.b_b + both - with_s0 + of_s0;
  const T across = sin2 * moments.a_a + cos2 * moments.b_b - both;
  // Rounding may leave a little less than 0.
  return {(along > 0 ? along : T(0)) * scale * scale, (across > 0 ? across : T(0)) * scale * scale};
}

/// How S1 and S2 are made of a and b, in cells that begin at a polarizer of that angle and have one
/// of the other angle at its right: S1 = s1_a * a + s1_b * b, and so on. All are -1, 0 or 1.
struct ContrastRotation {
  float s1_a, s1_b, s2_a, s2_b;
};

constexpr ContrastRotation rotation_of(int own_degrees, int right_degrees) {
  const auto cos2 = [](int degrees) { return degrees == 0 ? 1.0f : degrees == 90 ? -1.0f : 0.0f; };
  const auto sin2 = [](int degrees) {
    return degrees == 45 ? 1.0f : degrees == 135 ? -1.0f : 0.0f;
  };
  return {cos2(own_degrees), cos2(right_degrees), sin2(own_degrees), sin2(right_degrees)};
}

}  // namespace kv::polarization
