// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>

#include "polarization_processor/traversal/frame_pixel.h"
#include "polarization_processor/vector/mosaic_cell.h"

namespace kv {

/// The last two rows of a frame of even height. The last pixel of an odd width takes the weights of
/// entry 0 of the view, although its position in the mosaic cell is BL.
template <EncodingAxes encoding, bool even_width>
void walk_last_two_rows(const WeightedFrame& frame, std::uint64_t row) {
  const std::uint64_t width = static_cast<std::uint64_t>(frame.request.width);
  std::uint64_t column = 0;
  for (; column < width - 2; column += 2) {
    evaluate_cell<encoding>(frame, bottom_cell(row, column));
  }
  if constexpr (even_width) {
    evaluate_cell<encoding>(frame, corner_cell(row, column));
  } else {
    evaluate_pixel<encoding, BoundaryShape::right_edge>(frame, row, column, 0);
    evaluate_pixel<encoding, BoundaryShape::corner>(frame, row + 1, column, 0);
  }
}

/// The last row of a frame of odd height. Its last pixel takes the weights of entry 0 of the view,
/// also where an even width makes its position in the mosaic cell TR.
template <EncodingAxes encoding, bool even_width>
void walk_last_row(const WeightedFrame& frame, std::uint64_t row) {
  const std::uint64_t width = static_cast<std::uint64_t>(frame.request.width);
  std::uint64_t column = 0;
  for (; column < width - 2; column += 2) {
    evaluate_pixel<encoding, BoundaryShape::bottom_edge>(frame, row, column, 0);
    evaluate_pixel<encoding, BoundaryShape::bottom_edge>(frame, row, column + 1, 1);
  }
  if constexpr (even_width) {
    evaluate_pixel<encoding, BoundaryShape::bottom_edge>(frame, row, column++, 0);
  }
  evaluate_pixel<encoding, BoundaryShape::corner>(frame, row, column, 0);
}

}  // namespace kv
