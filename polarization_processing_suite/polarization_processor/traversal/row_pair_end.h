#pragma once

#include <cstdint>

#include "polarization_processor/traversal/cell.h"
#include "polarization_processor/traversal/frame_pixels.h"

namespace kv {

using RowPairEnd = void (*)(const WeighedFrame& frame, std::uint64_t row, std::uint64_t column);

/// Evaluates a row pair from an even `column` to the frame's right edge. In the cell at the edge of
/// an even width the first column stands in for the one to the right; an odd width ends in half a
/// cell.
template <EncodingAxes encoding, bool even_width>
void finish_row_pair(const WeighedFrame& frame, std::uint64_t row, std::uint64_t column) {
  const std::uint64_t width = static_cast<std::uint64_t>(frame.request.width);
  const Cells<encoding> cell(frame);

  for (; column < width - 2; column += 2) cell({row, row + 2, column, column + 2});
  if constexpr (even_width) {
    cell({row, row + 2, column, column});
  } else {
    const FramePixels<encoding> pixel(frame);
    pixel(shapes::right_edge, row, column, 0);
    pixel(shapes::right_edge, row + 1, column, 2);
  }
}

}  // namespace kv
