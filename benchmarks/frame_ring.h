// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "polarization_processor/records/transform_request.h"

namespace kv::bench {

struct FrameSize {
  std::int64_t width;
  std::int64_t height;

  std::size_t pixels() const { return static_cast<std::size_t>(width * height); }
  std::string name() const { return std::to_string(width) + "x" + std::to_string(height); }
};

/// Frames of 12-bit samples, smooth with noise, and the wanted planes of each, taken in turn. Large
/// buffers begin at byte 16 of a page, as those of malloc and of numpy do.
class FrameRing {
 public:
  /// At phase 0, with 4095 or, scaled, 65535 for full scale.
  FrameRing(FrameSize size, OutputSet outputs, bool scaled, std::size_t frames);

  const TransformRequest& next();

 private:
  struct Frame {
    std::vector<std::uint16_t> input;
    std::vector<float> normalized_stokes;
    std::array<std::vector<std::uint16_t>, kPlanes.size()> levels;
    TransformRequest request;
  };

  std::vector<Frame> frames_;
  std::size_t next_ = 0;
};

}  // namespace kv::bench
