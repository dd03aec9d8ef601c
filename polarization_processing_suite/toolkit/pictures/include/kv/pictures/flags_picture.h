// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <span>
#include <string_view>

#include "kv/pictures/legend.h"

namespace kv::polarization {

/// How a quality flag is shown.
struct FlagStyle {
  std::uint8_t bit = 0;     ///< its value in the map, such as 4; of several bits, any counts
  std::string_view name{};  ///< in the legend
  Colour colour{};          ///< of the pixels that have it
};

/// The intensity picture at half its brightness, in which flagged pixels have the colour of their
/// flag; of several flags, of the first one in the table. One byte of flags a pixel, row by row.
/// Throws Fault of kind argument for a missing brightness or flags of another size.
Picture flags_picture(const PictureMaps& maps, std::span<const std::uint8_t> flags,
                      std::span<const FlagStyle> table);

/// Names each flag of the table with its share of the pixels, whatever other flags they have.
Legend flags_legend(std::span<const std::uint8_t> flags, std::span<const FlagStyle> table);

}  // namespace kv::polarization
