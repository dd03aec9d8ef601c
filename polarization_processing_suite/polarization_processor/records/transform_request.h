#pragma once

#include <cstdint>

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

}  // namespace kv
