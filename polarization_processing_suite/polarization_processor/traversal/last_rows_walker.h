#pragma once

#include <cstdint>

#include "traversal/frame_pixels.h"

namespace kv {

using LastRowsWalker = void (*)(const TransformRequest& request, const PhaseView& view,
                                const PlaneFrame& planes, std::uint64_t row);

/// Finishes a frame from `row` on: two rows of a frame of even height, one row of odd height.
///
/// Where width and height differ in parity, the last pixel is weighed with entry 0 of the view,
/// whatever its own position in the mosaic cell.
template <EncodingAxes encoding, bool even_height, bool even_width>
void walk_last_rows(const TransformRequest& request, const PhaseView& view,
                    const PlaneFrame& planes, std::uint64_t row) {
  using namespace shapes;
  const FramePixels<encoding> pixel{request, view, planes};
  const std::uint64_t width = static_cast<std::uint64_t>(request.width);

  std::uint64_t column = 0;
  if (width != 2) {
    do {
      if constexpr (even_height) {
        pixel(interior, row, column, 0);
        pixel(interior, row, column + 1, 1);
        pixel(bottom_edge, row + 1, column, 2);
        pixel(bottom_edge, row + 1, column + 1, 3);
      } else {
        pixel(bottom_edge, row, column, 0);
        pixel(bottom_edge, row, column + 1, 1);
      }
      column += 2;
    } while (column < width - 2);
  }

  if constexpr (even_height && even_width) {
    pixel(interior, row, column, 0);
    pixel(right_edge, row, column + 1, 1);
    pixel(bottom_edge, row + 1, column, 2);
    pixel(corner, row + 1, column + 1, 3);
  } else if constexpr (even_height) {
    pixel(right_edge, row, column, 0);
    pixel(corner, row + 1, column, 0);
  } else if constexpr (even_width) {
    pixel(bottom_edge, row, column, 0);
    pixel(corner, row, column + 1, 0);
  } else {
    pixel(corner, row, column, 0);
  }
}

}  // namespace kv
