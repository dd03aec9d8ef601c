#include "kernel_run.h"

#include <random>

#include "polarization_processor/routing/kernel_selector.h"

namespace kv::test {

TransformRequest request_for(const Frame& frame, std::uint32_t phase) {
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

Planes run_kernel(const Frame& frame, std::uint32_t phase, const PolarizationProcessor& processor,
                  bool sse41, PlaneNumber wanted) {
  Planes planes(frame.height * frame.width);
  TransformRequest request = request_for(frame, phase);
  planes.hand_to(request, wanted);
  select_kernel(request, processor.phase_views[phase], sse41);
  return planes;
}

std::size_t vector_columns(std::size_t width) { return width < 8 ? 0 : 4 * (width / 4 - 1); }

std::size_t paired_rows(std::size_t height) { return height % 2 == 0 ? height - 2 : height - 1; }

std::vector<std::uint16_t> noise(std::size_t size, std::uint32_t seed) {
  std::mt19937 random(seed);
  std::vector<std::uint16_t> samples(size);
  for (std::uint16_t& sample : samples) sample = static_cast<std::uint16_t>(random());
  return samples;
}

}  // namespace kv::test
