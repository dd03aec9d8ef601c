// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <immintrin.h>

#include <cstdint>

#include "polarization_processor/pixel/stokes.h"
#include "polarization_processor/records/kernel_axes.h"

namespace kv {

/// Bounds a value to 0..output_max and rounds it in the thread's rounding mode. The upper bound
/// comes first, and minss and maxss return their second operand when one is a NaN: a NaN ends as
/// output_max.
inline std::uint16_t clamp_to_output(float value, float output_max) {
  const __m128 from_above = _mm_min_ss(_mm_set_ss(value), _mm_set_ss(output_max));
  const __m128 bounded = _mm_max_ss(from_above, _mm_setzero_ps());
  return static_cast<std::uint16_t>(_mm_cvtss_si32(bounded));
}

// The two ways from the units of the samples to those of the output, for a value or for lanes.

/// Of single pixels and mosaic cells.
template <class V>
V scaled_by_division(V value, V output_max, V input_max) {
  return (value * output_max) / input_max;
}

/// Of the vector blocks, with the processor's approximate reciprocal of input_max.
template <class V>
V scaled_by_reciprocal(V value, V output_max, V input_reciprocal) {
  return (value * output_max) * input_reciprocal;
}

/// Hands each wanted plane its value, in units of the plane and not yet bounded. The sink is that
/// of a form: it knows the width of its vectors, the formulas and where the pixels lie.
///
///   store_ratios(stokes)      S1/S0 and S2/S0 as the pair of normalized_stokes
///   store<plane>(value)       bounded and rounded
///   scaled(value)             by one of the two ways
///   azimuth(s1, s2), dolp(stokes)
template <EncodingAxes encoding, class V, class Sink>
void encode(const Stokes<V>& stokes, const Sink& sink) {
  const auto in_output_units = [&](const V& value) {
    if constexpr (encoding.scaled) {
      return sink.scaled(value);
    } else {
      return value;
    }
  };
  for_each_plane<encoding.outputs>([&]<Plane plane>() {
    constexpr PlaneSource source = traits_of(plane).source;
    if constexpr (source == PlaneSource::ratios) {
      sink.store_ratios(stokes);
    } else if constexpr (source == PlaneSource::s0) {
      sink.template store<plane>(in_output_units(stokes.s0));
    } else if constexpr (source == PlaneSource::s1) {
      sink.template store<plane>(in_output_units(stokes.s1));
    } else if constexpr (source == PlaneSource::s2) {
      sink.template store<plane>(in_output_units(stokes.s2));
    } else if constexpr (source == PlaneSource::azimuth) {
      sink.template store<plane>(sink.azimuth(stokes.s1, stokes.s2));
    } else {
      sink.template store<plane>(sink.dolp(stokes));
    }
  });
}

}  // namespace kv
