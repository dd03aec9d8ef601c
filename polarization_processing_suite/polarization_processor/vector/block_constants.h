// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <immintrin.h>

#include "polarization_processor/pixel/polarization_constants.h"
#include "polarization_processor/records/kernel_axes.h"
#include "polarization_processor/records/transform_request.h"

namespace kv {

/// What blocks need beside the samples, made once a frame by the executing processor. Those
/// that the encoding does not use stay zero.
struct BlockConstants {
  float half_factor;       ///< Approximate reciprocal of 2: factor of S0.
  float output_ceiling;    ///< output_max.
  float azimuth_scale;     ///< Plane units per degree.
  float input_reciprocal;  ///< Approximate reciprocal of input_max; scaled encodings only.
  float zero_difference;   ///< x - x in the thread's rounding mode: -0 when it is downward.
};

template <EncodingAxes encoding>
BlockConstants prepare_block_constants(const TransformRequest& request) {
  constexpr OutputSet outputs = encoding.outputs;
  BlockConstants constants{};
  if constexpr (needs_of(outputs).s0) {
    constants.half_factor = _mm_cvtss_f32(_mm_rcp_ss(_mm_set_ss(2.0f)));
  }
  if constexpr (outputs != OutputSet(Plane::normalized_stokes)) {
    constants.output_ceiling = request.output_max;
  }
  if constexpr (outputs.has(Plane::azimuth)) {
    constants.azimuth_scale = static_cast<float>(request.output_max_int) / float{kAzimuthRange};
  }
  if constexpr (encoding.scaled) {
    constants.input_reciprocal = _mm_cvtss_f32(_mm_rcp_ps(_mm_set1_ps(request.input_max)));
  }
  if constexpr (outputs.has(Plane::normalized_stokes)) {
    const __m128 x = _mm_set_ss(request.output_max);
    constants.zero_difference = _mm_cvtss_f32(_mm_sub_ss(x, x));
  }
  return constants;
}

}  // namespace kv
