// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace kv::test {

/// Polarizer, in steps of 45 degrees, at the positions TL, TR, BL, BR of the cell, by phase.
inline constexpr std::array<std::array<std::size_t, 4>, 4> kMosaics{{
    {0, 3, 1, 2},
    {1, 2, 0, 3},
    {2, 1, 3, 0},
    {3, 0, 2, 1},
}};

constexpr std::size_t cell_position(std::size_t row, std::size_t column) {
  return 2 * (row & 1) + (column & 1);
}

/// A scene that is the same everywhere: one sample value for each polarizer, 0 to 135 degrees.
inline std::vector<std::uint16_t> uniform_scene(const std::array<std::uint16_t, 4>& value_behind,
                                                std::size_t phase, std::size_t height,
                                                std::size_t width) {
  std::vector<std::uint16_t> frame(height * width);
  for (std::size_t row = 0; row < height; ++row) {
    for (std::size_t column = 0; column < width; ++column) {
      frame[row * width + column] = value_behind[kMosaics[phase][cell_position(row, column)]];
    }
  }
  return frame;
}

}  // namespace kv::test
