// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <algorithm>
#include <cmath>
#include <vector>

namespace kv::polarization {

/// The middle one of the values, which it puts out of order; 0 without values.
template <class Number>
double median_of(std::vector<Number>& values) {
  if (values.empty()) return 0;
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return static_cast<double>(*middle);
}

struct RobustSpread {
  double median = 0;
  double deviation = 0;  ///< standard one of a normal distribution with that median deviation
};

template <class Number>
RobustSpread robust_spread(std::vector<Number> values) {
  RobustSpread spread{median_of(values), 0};
  for (Number& value : values) {
    value = static_cast<Number>(std::abs(static_cast<double>(value) - spread.median));
  }
  spread.deviation = 1.4826 * median_of(values);
  return spread;
}

/// Value of the chi-squared distribution that lies `deviations` standard deviations of a normal one
/// from its middle, by Wilson and Hilferty (1931); 0 for its median. Within 1 per cent from 3
/// degrees of freedom up.
inline double chi_squared_at(double freedom, double deviations) {
  const double spread = 2 / (9 * freedom);
  const double root = 1 - spread + deviations * std::sqrt(spread);
  return freedom * root * root * root;
}

}  // namespace kv::polarization
