#include "polarization_processor/transform_checks.h"

#include <algorithm>
#include <array>

namespace kv {

ProcessorStatus check_buffers(const CallBuffers& buffers) {
  if (buffers.input == nullptr) return kv_status_null_input;

  std::array<const void*, 6> planes{buffers.normalized_stokes, buffers.intensity, buffers.stokes_s1,
                                    buffers.stokes_s2,         buffers.azimuth,   buffers.dolp};
  const auto begin = planes.begin();
  const auto end = std::remove(begin, planes.end(), nullptr);
  if (begin == end) return kv_status_no_outputs;
  if (std::find(begin, end, buffers.input) != end) return kv_status_input_aliases_output;
  for (auto plane = begin; plane != end; ++plane) {
    if (std::find(plane + 1, end, *plane) != end) return kv_status_outputs_alias;
  }
  return kv_status_ok;
}

ProcessorStatus check_frame(std::int32_t width, std::int32_t height, std::uint32_t bit_depth,
                            std::uint16_t output_max) {
  if (width < 2) return kv_status_invalid_width;
  if (height < 2) return kv_status_invalid_height;
  if (output_max == 0) return kv_status_zero_output_max;
  if (bit_depth > 16) return kv_status_invalid_bit_depth;
  return kv_status_ok;
}

}  // namespace kv
