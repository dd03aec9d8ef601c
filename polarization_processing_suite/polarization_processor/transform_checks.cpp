// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "polarization_processor/transform_checks.h"

#include <algorithm>
#include <array>

namespace kv {
namespace {

/// Identity tests of pointers: buffers that overlap at different addresses are not detected.
ProcessorStatus check_buffers(const TransformRequest& request) {
  if (request.input == nullptr) return kv_status_null_input;

  std::array<const void*, kPlanes.size()> planes{};
  auto end = planes.begin();
  for (const PlaneTraits& traits : kPlanes) {
    if (const void* const plane = address_of(request, traits.plane)) *end++ = plane;
  }
  const auto begin = planes.begin();
  if (begin == end) return kv_status_no_outputs;
  if (std::find(begin, end, request.input) != end) return kv_status_input_aliases_output;
  for (auto plane = begin; plane != end; ++plane) {
    if (std::find(plane + 1, end, *plane) != end) return kv_status_outputs_alias;
  }
  return kv_status_ok;
}

}  // namespace

ProcessorStatus check_request(const TransformRequest& request) {
  // Negative phases are let through: they act as phase 0.
  if (request.polar_phase >= 4) return kv_status_invalid_polar_phase;
  if (const auto status = check_buffers(request); status != kv_status_ok) return status;
  if (request.width < 2) return kv_status_invalid_width;
  if (request.height < 2) return kv_status_invalid_height;
  if (request.output_max_int == 0) return kv_status_zero_output_max;
  if (request.bit_depth > 16) return kv_status_invalid_bit_depth;
  return kv_status_ok;
}

}  // namespace kv
