#include "sample_frame.h"

#include <random>

namespace kv::bench {

SampleFrame::SampleFrame(FrameSize size)
    : size_(size),
      input_(size.pixels()),
      normalized_stokes_(2 * size.pixels()),
      planes_(5 * size.pixels()) {
  std::mt19937 random(1);
  for (std::size_t i = 0; i < input_.size(); ++i) {
    const std::size_t column = i % static_cast<std::size_t>(size.width);
    input_[i] = static_cast<std::uint16_t>(300 + column % 1200 + random() % 500);
  }
}

TransformRequest SampleFrame::request(const OutputSet& outputs, bool scaled) {
  const std::uint16_t output_max = scaled ? 65535 : 4095;
  TransformRequest request{.height = size_.height,
                           .width = size_.width,
                           .polar_phase = 0,
                           .input = input_.data(),
                           .bit_depth = 12,
                           .input_max = 4095.0f,
                           .output_max = static_cast<float>(output_max),
                           .output_max_int = output_max,
                           .normalized_stokes = nullptr,
                           .intensity = nullptr,
                           .stokes_s1 = nullptr,
                           .stokes_s2 = nullptr,
                           .azimuth = nullptr,
                           .dolp = nullptr};
  std::uint16_t* levels = planes_.data();
  for (const PlaneTraits& traits : kPlanes) {
    if (!outputs.has(traits.plane)) continue;
    if (traits.element == PlaneElement::float_pair) {
      request.normalized_stokes = normalized_stokes_.data();
    } else {
      request.*kLevelPlanes[index_of(traits.plane)] = levels;
      levels += size_.pixels();
    }
  }
  return request;
}

}  // namespace kv::bench
