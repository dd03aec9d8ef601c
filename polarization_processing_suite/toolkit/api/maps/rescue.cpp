// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "toolkit/api/maps/rescue.h"

#include <algorithm>
#include <bit>

#include "kv/polarization/quality.h"

namespace kv::polarization {
namespace {

/// One of the four that belong to a pixel, by CellPlace.
template <class Element, std::size_t count>
std::array<Element, 4> cell_of(const std::array<Element, count>& upper,
                               const std::array<Element, count>& lower, std::size_t i) {
  return {upper[i], upper[i + 1], lower[i], lower[i + 1]};
}

}  // namespace

std::size_t only_clipped(const std::array<std::uint8_t, 4>& flags) {
  unsigned places = 0;
  for (std::size_t place = 0; place < 4; ++place) {
    if ((flags[place] & quality::clipped) != 0) places |= 1u << place;
  }
  return std::has_single_bit(places) ? static_cast<std::size_t>(std::countr_zero(places))
                                     : kNoPlace;
}

void make_changeable(CellChunk& chunk) {
  if (chunk.has_changed) return;
  chunk.has_changed = true;
  for (std::size_t place = 0; place < 4; ++place) {
    std::copy_n(chunk.values[place], chunk.count, chunk.changed_values[place].data());
    std::copy_n(chunk.variances[place], chunk.count, chunk.changed_variances[place].data());
    chunk.gains[place].fill(1);
    chunk.values[place] = chunk.changed_values[place].data();
    chunk.variances[place] = chunk.changed_variances[place].data();
  }
}

void rescue(CellChunk& chunk) {
  for (std::size_t i = 0; i < static_cast<std::size_t>(chunk.count); ++i) {
    if ((chunk.flags[i] & quality::clipped) == 0) continue;
    const std::size_t place = only_clipped(cell_of(chunk.upper.flags, chunk.lower.flags, i));
    if (place == kNoPlace) continue;
    make_changeable(chunk);
    std::array<float, 4> samples = cell_of(chunk.upper.values, chunk.lower.values, i);
    rebuild(place, samples);
    chunk.changed_values[place][i] = samples[place];
    chunk.flags[i] |= quality::rescued;
    chunk.has_rescued = true;
  }
}

void correct_rescued_moments(CellChunk& chunk) {
  for (std::size_t i = 0; i < static_cast<std::size_t>(chunk.count); ++i) {
    if ((chunk.flags[i] & quality::rescued) == 0) continue;
    const auto& [own, right, lower, diagonal] = chunk.gains;
    const Moments<float> right_ones =
        rescued_moments(only_clipped(cell_of(chunk.upper.flags, chunk.lower.flags, i)),
                        cell_of(chunk.upper.variances, chunk.lower.variances, i),
                        {own[i], right[i], lower[i], diagonal[i]});
    chunk.moments.s0_s0[i] = right_ones.s0_s0;
    chunk.moments.a_a[i] = right_ones.a_a;
    chunk.moments.b_b[i] = right_ones.b_b;
    chunk.moments.s0_a[i] = right_ones.s0_a;
    chunk.moments.s0_b[i] = right_ones.s0_b;
    chunk.moments.a_b[i] = right_ones.a_b;
  }
}

}  // namespace kv::polarization
