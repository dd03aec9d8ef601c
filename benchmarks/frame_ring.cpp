// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "frame_ring.h"

#include <random>

namespace kv::bench {
namespace {

std::vector<std::uint16_t> sample_input(FrameSize size, std::uint32_t seed) {
  std::mt19937 random(seed);
  std::vector<std::uint16_t> input(size.pixels());
  for (std::size_t i = 0; i < input.size(); ++i) {
    const std::size_t column = i % static_cast<std::size_t>(size.width);
    input[i] = static_cast<std::uint16_t>(300 + column % 1200 + random() % 500);
  }
  return input;
}

}  // namespace

FrameRing::FrameRing(FrameSize size, OutputSet outputs, bool scaled, std::size_t frames)
    : frames_(frames) {
  std::uint32_t seed = 0;
  for (Frame& frame : frames_) {
    frame.input = sample_input(size, ++seed);
    TransformRequest& request = frame.request;
    request = {};
    request.height = size.height;
    request.width = size.width;
    request.input = frame.input.data();
    request.bit_depth = 12;
    request.input_max = 4095;
    request.output_max_int = scaled ? 65535 : 4095;
    request.output_max = static_cast<float>(request.output_max_int);
    for (const PlaneTraits& traits : kPlanes) {
      if (!outputs.has(traits.plane)) continue;
      const std::size_t index = index_of(traits.plane);
      if (traits.element == PlaneElement::float_pair) {
        frame.normalized_stokes.resize(2 * size.pixels());
        request.normalized_stokes = frame.normalized_stokes.data();
      } else {
        frame.levels[index].resize(size.pixels());
        request.*kLevelPlanes[index] = frame.levels[index].data();
      }
    }
  }
}

const TransformRequest& FrameRing::next() {
  const TransformRequest& request = frames_[next_].request;
  next_ = (next_ + 1) % frames_.size();
  return request;
}

}  // namespace kv::bench
