// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "toolkit/calibration/fit/pixel_solution.h"

namespace kv::polarization {

/// Where the numbers of the noise come from.
struct NoiseSource {
  bool dark_from_frames = false;
  bool gain_from_frames = false;
};

/// Fills the map of black levels from the sums of `frames` darks over `reference`, the class means
/// of one of them, and marks dark defects. Returns the temporal variance of a sample in the dark,
/// counts squared; nothing for fewer than 2 darks.
std::optional<double> fill_black(const PixelGrid& grid, const PixelSums& sums, std::size_t frames,
                                 const ClassValues& reference, double range, PixelMaps& maps);

/// Marks pixels whose residuals are far beyond those of their class as noisy. Returns the mean
/// weighted sum of squared residuals of each class's good pixels. `freedom` is the number of frames
/// less the 3 that a pixel's solution takes.
ClassValues mean_residuals(const PixelGrid& grid, const Buffer<float>& residuals, double freedom,
                           PixelMaps& maps);

/// The gain, in counts per electron, with which residuals are what noise makes of them.
double photon_transfer_gain(const ClassNormals& normals, const ClassValues& residuals,
                            double dark_variance);

}  // namespace kv::polarization
