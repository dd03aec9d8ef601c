#pragma once

#include <array>

#include "polarization_processor/pixel/neighbourhood.h"

namespace kv {

/// One row of a CoefficientSet applied to a neighbourhood, summed from left to right.
inline float weighted_sum(const std::array<float, 4>& weights, const Neighbourhood& samples) {
  return ((weights[0] * samples.own + weights[1] * samples.horizontal) +
          weights[2] * samples.vertical) +
         weights[3] * samples.diagonal;
}

/// S0 is half the sum of the four samples; S1 and S2 are plain differences.
inline constexpr float kS0Factor = 0.5f;

}  // namespace kv
