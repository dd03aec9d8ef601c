// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>

#include "polarization_processor/pixel/plane_frame.h"
#include "polarization_processor/pixel/stokes.h"

namespace kv {

/// Where the neighbours of a pixel lie. The mosaic repeats every two samples, so the neighbour on
/// the other side, taken at an edge of the frame, lies behind the same polarizer.
enum class BoundaryShape {
  interior,     ///< Neighbours to the right and below. Kernels take these pixels as mosaic cells.
  right_edge,   ///< To the left and below.
  bottom_edge,  ///< To the right and above.
  corner        ///< To the left and above.
};

/// The four samples from which a pixel is estimated. Conversion from 16 bits is exact.
template <BoundaryShape shape>
Neighbourhood<float> neighbourhood_at(const InputDescriptor& input, std::uint64_t row,
                                      std::uint64_t column) {
  constexpr bool left = shape == BoundaryShape::right_edge || shape == BoundaryShape::corner;
  constexpr bool above = shape == BoundaryShape::bottom_edge || shape == BoundaryShape::corner;
  const std::uint64_t neighbour_column = left ? column - 1 : column + 1;
  const std::uint64_t neighbour_row = above ? row - 1 : row + 1;
  return {static_cast<float>(input.at(row, column)),
          static_cast<float>(input.at(row, neighbour_column)),
          static_cast<float>(input.at(neighbour_row, column)),
          static_cast<float>(input.at(neighbour_row, neighbour_column))};
}

}  // namespace kv
