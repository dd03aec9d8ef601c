#pragma once

#include <cstdint>
#include <type_traits>

#include "polarization_processor/pixel/plane_frame.h"

namespace kv {

/// Where the neighbours of a pixel lie. The mosaic repeats every two samples, so the neighbour on
/// the other side, taken at an edge of the frame, lies behind the same polarizer.
enum class BoundaryShape {
  interior,     ///< Neighbours to the right and below.
  right_edge,   ///< To the left and below.
  bottom_edge,  ///< To the right and above.
  corner        ///< To the left and above.
};

/// The shapes as arguments, so that a list of pixels reads as one.
namespace shapes {
template <BoundaryShape shape>
using Tag = std::integral_constant<BoundaryShape, shape>;
inline constexpr Tag<BoundaryShape::interior> interior{};
inline constexpr Tag<BoundaryShape::right_edge> right_edge{};
inline constexpr Tag<BoundaryShape::bottom_edge> bottom_edge{};
inline constexpr Tag<BoundaryShape::corner> corner{};
}  // namespace shapes

/// The four samples from which a pixel is estimated. Conversion from 16 bits is exact.
struct Neighbourhood {
  float own;
  float horizontal;
  float vertical;
  float diagonal;
};

template <BoundaryShape shape>
Neighbourhood neighbourhood_at(const InputDescriptor& input, std::uint64_t row,
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
