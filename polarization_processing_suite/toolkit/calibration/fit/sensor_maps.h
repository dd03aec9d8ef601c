// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "toolkit/calibration/fit/pixel_solution.h"

namespace kv::polarization {

struct MapNoise {
  double gain;            ///< counts per electron
  double dark_variance;   ///< counts squared
  double black_variance;  ///< of a pixel's black level, counts squared
};

/// Turns the weights of 1, cos 2t and sin 2t, which lie in the maps of gain, diattenuation and
/// orientation, into these; marks pixels out of range, and fills the maps of errors. The mean gain
/// becomes 1 and the mean deviation from the nominal angles 0, by the good pixels; `source_offset`
/// of the calibration is set.
void finish_maps(const PixelGrid& grid, const ClassNormals& normals, const MapNoise& noise,
                 WorkerPool& pool, Calibration& calibration);

/// Fills the summaries of the classes and the condition of their matrix.
void summarise(const PixelGrid& grid, double black_variance, Calibration& calibration);

}  // namespace kv::polarization
