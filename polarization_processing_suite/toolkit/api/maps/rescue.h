// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "toolkit/api/maps/cell_chunk.h"

namespace kv::polarization {

/// The only clipped one of four samples, by their flags.
inline constexpr std::size_t kNoPlace = 4;
std::size_t only_clipped(const std::array<std::uint8_t, 4>& flags);

/// Replaces the sample at a place by the sum of the pair at right angles, less its partner.
template <class T>
void rebuild(std::size_t place, std::array<T, 4>& samples) {
  const T own_pair = samples[own_place] + samples[diagonal_place];
  const T other_pair = samples[right_place] + samples[lower_place];
  const bool is_of_own_pair = place == own_place || place == diagonal_place;
  samples[place] = (is_of_own_pair ? other_pair : own_pair) - samples[opposite(place)];
}

/// Rebuilds the only clipped sample of each pixel that has just one, and flags the pixel.
void rescue(CellChunk& chunk);

/// Puts right the moments of the rescued pixels, which are not those of four independent samples.
void correct_rescued_moments(CellChunk& chunk);

/// Copies the samples to where they can be changed, and points to them.
void make_changeable(CellChunk& chunk);

}  // namespace kv::polarization
