#pragma once

#include <cstdint>

#include "traversal/frame_pixels.h"

namespace kv {

using RowPairEnd = void (*)(const TransformRequest& request, const PhaseView& view,
                            const PlaneFrame& planes, std::uint64_t row, std::uint64_t column);

/// Evaluates a row pair from an even `column` to the frame's right edge: tail pairs, then the edge
/// step, which is two columns of an even width and one column of an odd width.
template <EncodingAxes encoding, bool even_width>
void finish_row_pair(const TransformRequest& request, const PhaseView& view,
                     const PlaneFrame& planes, std::uint64_t row, std::uint64_t column) {
  using namespace shapes;
  const FramePixels<encoding> pixel{request, view, planes};
  const std::uint64_t width = static_cast<std::uint64_t>(request.width);

  for (; column < width - 2; column += 2) {
    pixel(interior, row, column, 0);
    pixel(interior, row, column + 1, 1);
    pixel(interior, row + 1, column, 2);
    pixel(interior, row + 1, column + 1, 3);
  }

  if constexpr (even_width) {
    pixel(interior, row, column, 0);
    pixel(right_edge, row, column + 1, 1);
    pixel(interior, row + 1, column, 2);
    pixel(right_edge, row + 1, column + 1, 3);
  } else {
    pixel(right_edge, row, column, 0);
    pixel(right_edge, row + 1, column, 2);
  }
}

}  // namespace kv
