// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <array>

namespace kv {

/// Weights with which one pixel's Stokes values are estimated from its 2x2 neighbourhood. The
/// columns of each row weigh the pixel itself, its horizontal, its vertical and its diagonal
/// neighbour.
struct CoefficientSet {
  std::array<float, 4> s0_weights;
  std::array<float, 4> s1_weights;
  std::array<float, 4> s2_weights;
  std::array<float, 4> spare_weights;  ///< Kept for the caller; no kernel reads it.
};
static_assert(sizeof(CoefficientSet) == 16 * sizeof(float));

/// The sets of the four positions of the mosaic cell, numbered 2 * (row & 1) + (column & 1) from
/// the frame's top-left pixel: TL, TR, BL, BR.
using PhaseView = std::array<const CoefficientSet*, 4>;

}  // namespace kv
