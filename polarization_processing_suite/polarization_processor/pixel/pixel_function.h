// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <array>
#include <cstdint>

#include "polarization_processor/pixel/neighbourhood.h"
#include "polarization_processor/pixel/output_encoding.h"
#include "polarization_processor/pixel/plane_frame.h"
#include "polarization_processor/pixel/polarization.h"
#include "polarization_processor/records/coefficient_set.h"

namespace kv {

/// Where and how a single pixel is written.
struct PixelSink {
  std::uint64_t row, column;
  const TransformRequest& request;
  const PlaneFrame& planes;

  void store_ratios(const Stokes<float>& stokes) const {
    const std::uint64_t width = static_cast<std::uint64_t>(request.width);
    float* const pair = request.normalized_stokes + (row * width + column) * 2;
    pair[0] = stokes.s1 / stokes.s0;
    pair[1] = stokes.s2 / stokes.s0;
  }

  template <Plane plane>
  void store(float value) const {
    planes.level_plane<plane>().at(row, column) = clamp_to_output(value, request.output_max);
  }

  float scaled(float value) const {
    return scaled_by_division(value, request.output_max, request.input_max);
  }
  float azimuth(float s1, float s2) const { return azimuth_value(s1, s2, request.output_max); }
  float dolp(const Stokes<float>& stokes) const { return dolp_value(stokes, request.output_max); }
};

/// Evaluates one position of the frame and writes its element of every plane of the encoding. The
/// caller picks the shape that fits the position, and the weights. This is the numeric definition
/// of the planes: all arithmetic is single precision, each operation rounded by itself.
template <EncodingAxes encoding, BoundaryShape shape>
void pixel_function(std::uint64_t row, std::uint64_t column, const CoefficientSet& coefficients,
                    const TransformRequest& request, const PlaneFrame& planes) {
  constexpr StokesNeeds needs = needs_of(encoding.outputs);
  const Neighbourhood<float> samples = neighbourhood_at<shape>(planes.input, row, column);
  Stokes<float> stokes;
  const auto sum = [&](const std::array<float, 4>& weights) {
    return weighted_sum({weights[0], weights[1], weights[2], weights[3]}, samples);
  };
  if constexpr (needs.s0) stokes.s0 = sum(coefficients.s0_weights) * kS0Factor;
  if constexpr (needs.s1) stokes.s1 = sum(coefficients.s1_weights);
  if constexpr (needs.s2) stokes.s2 = sum(coefficients.s2_weights);
  encode<encoding>(stokes, PixelSink{row, column, request, planes});
}

}  // namespace kv
