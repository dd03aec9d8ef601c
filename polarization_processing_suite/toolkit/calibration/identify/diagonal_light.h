// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "kv/polarization/frame.h"
#include "kv/polarization/region.h"

namespace kv::polarization {

/// The light of a region by a cell's diagonals, without a word of the mosaic.
struct DiagonalLight {
  double dolp = 0;         ///< NaN without cells or light
  double angle = 0;        ///< half of that of the differences along the diagonals, degrees
  double dolp_sigma = 0;   ///< by the scatter of cells
  double angle_sigma = 0;  ///< likewise, degrees
  double imbalance = 0;    ///< difference of the diagonals' sums over S0
};

DiagonalLight diagonal_light(const FrameView& frame, const Rectangle& region, double black_level);

}  // namespace kv::polarization
