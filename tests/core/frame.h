// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <cstdint>
#include <random>
#include <vector>

#include "polarization_processor/records/transform_request.h"

namespace kv::test {

struct Frame {
  std::size_t height = 2;
  std::size_t width = 2;
  std::vector<std::uint16_t> samples = {};
  std::uint32_t bit_depth = 16;
  std::uint16_t output_max = 65535;
};

/// Asks for no plane yet.
inline TransformRequest request_for(const Frame& frame, std::uint32_t phase) {
  TransformRequest request{};
  request.height = static_cast<std::int64_t>(frame.height);
  request.width = static_cast<std::int64_t>(frame.width);
  request.polar_phase = static_cast<std::int32_t>(phase);
  request.input = frame.samples.data();
  request.bit_depth = frame.bit_depth;
  request.input_max = static_cast<float>((1 << frame.bit_depth) - 1);
  request.output_max = frame.output_max;
  request.output_max_int = frame.output_max;
  return request;
}

/// Pairs of rows but for the last one or two, blocks of four columns but for the last one.
inline bool in_vector_area(const Frame& frame, std::size_t row, std::size_t column) {
  return row < (frame.height - 1) / 2 * 2 && column / 4 + 1 < frame.width / 4;
}

inline std::vector<std::uint16_t> noise(std::size_t size, std::uint32_t seed) {
  std::mt19937 random(seed);
  std::vector<std::uint16_t> samples(size);
  for (std::uint16_t& sample : samples) sample = static_cast<std::uint16_t>(random());
  return samples;
}

}  // namespace kv::test
