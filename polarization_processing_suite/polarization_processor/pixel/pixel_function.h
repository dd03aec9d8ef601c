#pragma once

#include <cstdint>

#include "polarization_processor/pixel/neighbourhood.h"
#include "polarization_processor/pixel/output_encoding.h"
#include "polarization_processor/pixel/output_set.h"
#include "polarization_processor/pixel/plane_frame.h"
#include "polarization_processor/pixel/polarization.h"
#include "polarization_processor/pixel/stokes_estimate.h"
#include "polarization_processor/records/coefficient_set.h"
#include "polarization_processor/records/transform_request.h"

namespace kv {

/// Evaluates one position of the frame and writes its element of every plane of the encoding. The
/// caller picks the shape that fits the position, and the weights. This is the numeric definition
/// of the planes: all arithmetic is single precision, each operation rounded by itself.
template <EncodingAxes encoding, BoundaryShape shape>
void pixel_function(std::uint64_t row, std::uint64_t column, const CoefficientSet& coefficients,
                    const TransformRequest& request, const PlaneFrame& planes) {
  constexpr OutputSet outputs = encoding.outputs;
  const Neighbourhood samples = neighbourhood_at<shape>(planes.input, row, column);
  [[maybe_unused]] float s0, s1, s2;
  if constexpr (outputs.needs_s0()) s0 = weighted_sum(coefficients.s0_weights, samples) * kS0Factor;
  if constexpr (outputs.needs_s1()) s1 = weighted_sum(coefficients.s1_weights, samples);
  if constexpr (outputs.needs_s2()) s2 = weighted_sum(coefficients.s2_weights, samples);

  if constexpr (outputs.normalized_stokes) {
    const std::uint64_t width = static_cast<std::uint64_t>(request.width);
    float* const pair = request.normalized_stokes + (row * width + column) * 2;
    pair[0] = s1 / s0;
    pair[1] = s2 / s0;
  }

  const auto encode_linear = [&](const PlaneDescriptor& plane, float value) {
    const float v = in_output_units<encoding.scaled>(value, request.output_max, request.input_max);
    plane.at(row, column) = clamp_to_output(v, request.output_max);
  };
  if constexpr (outputs.intensity) encode_linear(planes.intensity, s0);
  if constexpr (outputs.stokes_s1) encode_linear(planes.stokes_s1, s1);
  if constexpr (outputs.stokes_s2) encode_linear(planes.stokes_s2, s2);

  if constexpr (outputs.azimuth) {
    const float v = azimuth_value(s1, s2, request.output_max);
    planes.azimuth.at(row, column) = clamp_to_output(v, request.output_max);
  }
  if constexpr (outputs.dolp) {
    const float v = dolp_value(s0, s1, s2, request.output_max);
    planes.dolp.at(row, column) = clamp_to_output(v, request.output_max);
  }
}

}  // namespace kv
