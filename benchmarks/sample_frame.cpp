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
  const auto plane = [&](bool wanted, std::size_t number) {
    return wanted ? planes_.data() + number * size_.pixels() : nullptr;
  };
  return {.height = size_.height,
          .width = size_.width,
          .polar_phase = 0,
          .input = input_.data(),
          .bit_depth = 12,
          .input_max = 4095.0f,
          .output_max = static_cast<float>(output_max),
          .output_max_int = output_max,
          .normalized_stokes = outputs.normalized_stokes ? normalized_stokes_.data() : nullptr,
          .intensity = plane(outputs.intensity, 0),
          .stokes_s1 = plane(outputs.stokes_s1, 1),
          .stokes_s2 = plane(outputs.stokes_s2, 2),
          .azimuth = plane(outputs.azimuth, 3),
          .dolp = plane(outputs.dolp, 4)};
}

}  // namespace kv::bench
