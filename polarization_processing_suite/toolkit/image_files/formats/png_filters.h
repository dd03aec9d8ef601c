// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace kv::polarization {

/// How a row of a PNG is stored: as differences to what is known before, byte by byte.
enum class PngFilter : std::uint8_t {
  none,
  sub,      ///< to the pixel on the left
  up,       ///< to the pixel above
  average,  ///< to the mean of these two, rounded down
  paeth     ///< to the one of left, above and corner, the pixel left of that above, which is
            ///< nearest to left + above - corner
};

constexpr std::size_t kPngFilters = 5;

/// A row to be filtered has so many bytes of 0 before it, and as many behind that may be read; what
/// is stored has room for as many more.
constexpr std::size_t kFilterMargin = 16;

/// Turns a row into what is stored, by `none`, `sub` or `paeth`. Above the first row all is 0.
/// `pixel` is a pixel's size in bytes, up to kFilterMargin.
void filter(PngFilter kind, std::span<const std::uint8_t> row, const std::uint8_t* above,
            std::size_t pixel, std::uint8_t* stored);

/// Turns what is stored into the row, at its place. There are no margins.
void unfilter(PngFilter kind, std::span<std::uint8_t> row, const std::uint8_t* above,
              std::size_t pixel);

}  // namespace kv::polarization
