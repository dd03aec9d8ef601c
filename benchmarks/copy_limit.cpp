// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "copy_limit.h"

#include <cstddef>
#include <cstring>

namespace kv::bench {

void copy_streams(const TransformRequest& request) {
  const std::size_t width = static_cast<std::size_t>(request.width);
  const std::size_t row_bytes = width * sizeof(std::uint16_t);
  for (std::size_t row = 0; row < static_cast<std::size_t>(request.height); ++row) {
    const std::uint16_t* const input = request.input + row * width;
    for (const auto levels : kLevelPlanes) {
      if (levels == nullptr || request.*levels == nullptr) continue;
      std::memcpy(request.*levels + row * width, input, row_bytes);
    }
    if (request.normalized_stokes != nullptr) {
      // Two floats a pixel: four times the bytes of the input.
      auto* const pairs =
          reinterpret_cast<unsigned char*>(request.normalized_stokes) + row * 4 * row_bytes;
      for (std::size_t part = 0; part < 4; ++part)
        std::memcpy(pairs + part * row_bytes, input, row_bytes);
    }
  }
}

}  // namespace kv::bench
