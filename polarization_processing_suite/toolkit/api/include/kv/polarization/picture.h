// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace kv::polarization {

using Colour = std::array<std::uint8_t, 3>;  ///< red, green, blue, as displays take them

/// An image to look at, grey or in colour.
struct Picture {
  /// Black, of so many pixels. Sides and channels are above 0.
  Picture(int picture_width, int picture_height, int picture_channels)
      : width(picture_width),
        height(picture_height),
        channels(picture_channels),
        bytes(row_size() * static_cast<std::size_t>(height)) {}

  /// Bytes from row to row.
  std::size_t row_size() const {
    return static_cast<std::size_t>(width) * static_cast<std::size_t>(channels);
  }

  /// Its first channel; nothing is checked.
  std::uint8_t* pixel(int column, int row) {
    return &bytes[static_cast<std::size_t>(row) * row_size() +
                  static_cast<std::size_t>(column) * static_cast<std::size_t>(channels)];
  }

  int width;                        ///< pixels
  int height;                       ///< pixels
  int channels;                     ///< 1: grey; 3: red, green, blue
  std::vector<std::uint8_t> bytes;  ///< row by row without gaps, channels interleaved
};

}  // namespace kv::polarization
