// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

namespace kv {

/// The linear Stokes values of one pixel, or of several in the lanes of vectors. Values that no
/// wanted plane is made of are left out.
template <class V>
struct Stokes {
  V s0, s1, s2;
};

/// The samples of a 2x2 neighbourhood, or their weights, by their place in it.
template <class V>
struct Neighbourhood {
  V own, horizontal, vertical, diagonal;
};

/// A row of a CoefficientSet applied to a neighbourhood, summed from left to right.
template <class V>
V weighted_sum(const Neighbourhood<V>& weights, const Neighbourhood<V>& samples) {
  return ((weights.own * samples.own + weights.horizontal * samples.horizontal) +
          weights.vertical * samples.vertical) +
         weights.diagonal * samples.diagonal;
}

/// S0 is half the sum of the four samples; S1 and S2 are plain differences.
inline constexpr float kS0Factor = 0.5f;

}  // namespace kv
