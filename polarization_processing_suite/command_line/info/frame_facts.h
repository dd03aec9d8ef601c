// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "kv/polarization/frame.h"

namespace kv::polarization {

/// Samples of the pixels at one place of the mosaic's cells.
struct PlaceFacts {
  int least = 0;
  int greatest = 0;
  double mean = 0;
  std::size_t at_full_scale = 0;  ///< or above
};

/// What the samples of a frame tell.
struct FrameFacts {
  std::array<PlaceFacts, 4> places;  ///< top left, top right, bottom left, bottom right of a cell
  int greatest = 0;
  int bits_used = 0;        ///< that the greatest sample needs
  int unused_low_bits = 0;  ///< which are 0 in all samples; 0 for a black frame
  std::size_t at_full_scale = 0;
  std::size_t above_full_scale = 0;

  // Of cells below full scale: the sum of the samples at the top left and the bottom right less
  // that of the two others, in units of the mean S0, half a cell's sum. Polarizers at right angles
  // lie on the diagonals, so that it is 0 in even light, whatever the phase. NaN without such
  // cells, and for black frames.
  double diagonal_difference = 0;  ///< mean: unequal gains of the classes
  double diagonal_spread = 0;      ///< standard deviation from cell to cell: edges and noise
};

/// Of a frame of 2 x 2 pixels or more.
FrameFacts facts_of(const Frame& frame);

/// How much samples differ from those of the same class beside and below them, as a share of the
/// mean: small for a picture, large for one that was unpacked or cut into rows in the wrong way. 0
/// for a black frame.
double roughness_of(const Frame& frame);

}  // namespace kv::polarization
