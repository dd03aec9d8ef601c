#pragma once

#include <cstdint>

#include "polarization_processor/kevrinth_qrm_polarization_processor.h"

namespace kv {

/// The buffers of a call, in the order of its arguments.
struct CallBuffers {
  const std::uint16_t* input;
  float* normalized_stokes;
  std::uint16_t* intensity;
  std::uint16_t* stokes_s1;
  std::uint16_t* stokes_s2;
  std::uint16_t* azimuth;
  std::uint16_t* dolp;
};

/// Identity tests of pointers: buffers that overlap at different addresses are not detected.
ProcessorStatus check_buffers(const CallBuffers& buffers);

ProcessorStatus check_frame(std::int32_t width, std::int32_t height, std::uint32_t bit_depth,
                            std::uint16_t output_max);

}  // namespace kv
