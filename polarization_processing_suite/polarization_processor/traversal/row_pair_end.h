// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>

#include "polarization_processor/traversal/frame_pixel.h"
#include "polarization_processor/vector/mosaic_cell.h"

namespace kv {

/// The columns of a row pair that are right of its blocks; an odd width ends in half a cell.
template <EncodingAxes encoding, bool even_width>
void finish_row_pair(const WeightedFrame& frame, std::uint64_t row, std::uint64_t column) {
  const std::uint64_t width = static_cast<std::uint64_t>(frame.request.width);
  for (; column < width - 2; column += 2) {
    evaluate_cell<encoding>(frame, inner_cell(row, column));
  }
  if constexpr (even_width) {
    evaluate_cell<encoding>(frame, right_edge_cell(row, column));
  } else {
    evaluate_pixel<encoding, BoundaryShape::right_edge>(frame, row, column, 0);
    evaluate_pixel<encoding, BoundaryShape::right_edge>(frame, row + 1, column, 2);
  }
}

}  // namespace kv
