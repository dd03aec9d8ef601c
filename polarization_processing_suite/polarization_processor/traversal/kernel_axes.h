#pragma once

#include <cstddef>
#include <cstdint>

#include "pixel/output_set.h"

namespace kv {

inline constexpr std::size_t kPhaseCount = 4;

/// Everything that can vary from frame to frame, and so tells one frame kernel from another.
struct KernelAxes {
  std::uint32_t phase = 0;  ///< 0 to 3: the top-left pixel lies behind 0, 45, 90, 135 degrees.
  EncodingAxes encoding;
  bool even_height = false;
  bool even_width = false;
  bool sse41 = false;

  constexpr bool operator==(const KernelAxes&) const = default;
};

}  // namespace kv
