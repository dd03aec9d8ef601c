// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <array>
#include <cstdint>

#include "planes/plane_list.h"

namespace kv {

/// One checked transform call. Vector modules read this record too: its layout is fixed.
struct TransformRequest {
  std::int64_t height;       ///< Rows, at least 2.
  std::int64_t width;        ///< Columns, at least 2; the row stride of every plane, in elements.
  std::int32_t polar_phase;  ///< Of the frame's own top-left pixel.
  const std::uint16_t* input;
  std::uint32_t bit_depth;      ///< 0 to 16.
  float input_max;              ///< 2^bit_depth - 1.
  float output_max;             ///< 1 to 65535.
  std::int32_t output_max_int;  ///< The same number.
  float* normalized_stokes;     ///< Two floats a pixel; this plane and the others null if unwanted.
  std::uint16_t* intensity;
  std::uint16_t* stokes_s1;
  std::uint16_t* stokes_s2;
  std::uint16_t* azimuth;
  std::uint16_t* dolp;
};
static_assert(sizeof(TransformRequest) == 96);

/// The 16-bit planes of a request by their place in the list of planes; null for normalized_stokes.
inline constexpr std::array<std::uint16_t * TransformRequest::*, kPlanes.size()> kLevelPlanes{
    nullptr,
    &TransformRequest::intensity,
    &TransformRequest::stokes_s1,
    &TransformRequest::stokes_s2,
    &TransformRequest::azimuth,
    &TransformRequest::dolp};

/// Null for a plane that is not wanted.
inline const void* address_of(const TransformRequest& request, Plane plane) {
  if (plane == Plane::normalized_stokes) return request.normalized_stokes;
  return request.*kLevelPlanes[index_of(plane)];
}

}  // namespace kv
