// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "polarization_processor/records/transform_request.h"

namespace kv {

template <class Element>
struct PlaneOf {
  Element* data;         ///< Dense rows; null for a plane that is not wanted.
  std::uint64_t height;  ///< Rows.
  std::uint64_t width;   ///< Elements per row.

  Element& at(std::uint64_t row, std::uint64_t column) const { return data[row * width + column]; }
};

using InputDescriptor = PlaneOf<const std::uint16_t>;
using PlaneDescriptor = PlaneOf<std::uint16_t>;

/// The frame and its 16-bit planes as the evaluation of one pixel sees them.
struct PlaneFrame {
  InputDescriptor input;
  /// By place in the list of planes.
  std::array<PlaneDescriptor, kPlanes.size()> levels;

  explicit PlaneFrame(const TransformRequest& request)
      : input{request.input, static_cast<std::uint64_t>(request.height),
              static_cast<std::uint64_t>(request.width)} {
    for (std::size_t index = 0; index < levels.size(); ++index) {
      const auto plane = kLevelPlanes[index];
      levels[index] = {plane == nullptr ? nullptr : request.*plane, input.height, input.width};
    }
  }

  template <Plane plane>
  const PlaneDescriptor& level_plane() const {
    static_assert(traits_of(plane).element == PlaneElement::level);
    return levels[index_of(plane)];
  }
};

}  // namespace kv
