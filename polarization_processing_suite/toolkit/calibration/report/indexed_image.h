// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "kv/polarization/picture.h"

namespace kv::polarization {

/// A picture of up to 256 colours.
struct IndexedImage {
  int width = 0;
  int height = 0;
  std::vector<std::uint8_t> pixels;  ///< row by row, from the top
  std::array<Colour, 256> palette{};
};

/// The image as an address that holds it: a BMP, which every browser shows and every build can
/// make. A byte a pixel, and a third for its coding as text.
std::string data_address(const IndexedImage& image);

}  // namespace kv::polarization
