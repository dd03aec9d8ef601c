#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "planes/plane_list.h"
#include "polarization_processor/records/transform_request.h"

namespace kv::bench {

struct FrameSize {
  std::int64_t width;
  std::int64_t height;

  std::size_t pixels() const { return static_cast<std::size_t>(width * height); }
  std::string name() const { return std::to_string(width) + "x" + std::to_string(height); }
};

/// A frame of 12-bit samples, smooth with noise, and all six planes.
class SampleFrame {
 public:
  explicit SampleFrame(FrameSize size);

  /// The planes that `outputs` names, at phase 0, with 4095 or, scaled, 65535 for full scale.
  TransformRequest request(const OutputSet& outputs, bool scaled);

 private:
  FrameSize size_;
  std::vector<std::uint16_t> input_;
  std::vector<float> normalized_stokes_;
  std::vector<std::uint16_t> planes_;
};

}  // namespace kv::bench
