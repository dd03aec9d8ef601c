#pragma once

#include <cstdint>

#include "polarization_processor/traversal/cell.h"
#include "polarization_processor/traversal/frame_pixels.h"

namespace kv {

using LastRowsWalker = void (*)(const WeighedFrame& frame, std::uint64_t row);

/// The last two rows of a frame of even height. In the cells at the bottom the upper row stands in
/// for the row below. The last pixel of an odd width is weighed with entry 0 of the view, although
/// its position in the mosaic cell is BL.
template <EncodingAxes encoding, bool even_width>
void walk_last_two_rows(const WeighedFrame& frame, std::uint64_t row) {
  const std::uint64_t width = static_cast<std::uint64_t>(frame.request.width);
  const Cells<encoding> cell(frame);

  std::uint64_t column = 0;
  for (; column < width - 2; column += 2) cell({row, row, column, column + 2});
  if constexpr (even_width) {
    cell({row, row, column, column});
  } else {
    const FramePixels<encoding> pixel(frame);
    pixel(shapes::right_edge, row, column, 0);
    pixel(shapes::corner, row + 1, column, 0);
  }
}

/// The last row of a frame of odd height. Its last pixel is weighed with entry 0 of the view, also
/// where an even width makes its position in the mosaic cell TR.
template <EncodingAxes encoding, bool even_width>
void walk_last_row(const WeighedFrame& frame, std::uint64_t row) {
  const std::uint64_t width = static_cast<std::uint64_t>(frame.request.width);
  const FramePixels<encoding> pixel(frame);

  std::uint64_t column = 0;
  for (; column < width - 2; column += 2) {
    pixel(shapes::bottom_edge, row, column, 0);
    pixel(shapes::bottom_edge, row, column + 1, 1);
  }
  if constexpr (even_width) pixel(shapes::bottom_edge, row, column++, 0);
  pixel(shapes::corner, row, column, 0);
}

}  // namespace kv
