#pragma once

#include <immintrin.h>

#include <cstdint>

namespace kv {

/// Bounds a value to 0..output_max and rounds it in the thread's rounding mode. The upper bound
/// comes first, and minss and maxss return their second operand when one is a NaN: a NaN ends as
/// output_max.
inline std::uint16_t clamp_to_output(float value, float output_max) {
  const __m128 from_above = _mm_min_ss(_mm_set_ss(value), _mm_set_ss(output_max));
  const __m128 bounded = _mm_max_ss(from_above, _mm_setzero_ps());
  return static_cast<std::uint16_t>(_mm_cvtss_si32(bounded));
}

/// A linear Stokes value in the units of its plane.
template <bool scaled>
float in_output_units(float value, [[maybe_unused]] float output_max,
                      [[maybe_unused]] float input_max) {
  if constexpr (scaled) {
    return (value * output_max) / input_max;
  } else {
    return value;
  }
}

}  // namespace kv
