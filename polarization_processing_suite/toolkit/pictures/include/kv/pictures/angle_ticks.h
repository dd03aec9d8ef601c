// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "kv/pictures/legend.h"

namespace kv::polarization {

/// The intensity picture under a grid of ticks, one in each cell of cell_size x cell_size pixels:
/// short lines whose direction is the angle and whose length is DoLP, nearly a whole cell at
/// dolp_white. Each stands for the mean Stokes values of its cell, in which bright pixels weigh
/// more. Unpolarized cells have a dot, black ones nothing. Colour. Some 40 ms for 5
/// megapixels.
///
/// Throws Fault of kind argument for missing brightness or normalized_stokes, a bad dolp_white, and
/// a cell_size below 1.
Picture angle_ticks_picture(const PictureMaps& maps, double dolp_white, int cell_size);

/// For some 40 cells along the longer side, but at least 12 pixels.
int tick_cell_size(const PictureMaps& maps);

/// Tells what a full tick stands for.
Legend angle_ticks_legend(double dolp_white, int cell_size);

}  // namespace kv::polarization
