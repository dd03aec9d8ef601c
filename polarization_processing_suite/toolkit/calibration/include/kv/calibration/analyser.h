// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <array>

#include "kv/calibration/calibration.h"
#include "kv/polarization/weights.h"

namespace kv::polarization {

/// What a pixel makes of light: see the model in kv/calibration/calibration.h.
struct PixelResponse {
  double gain = 1;           ///< relative to the mean of all good pixels
  double diattenuation = 1;  ///< 0 to about 1
  double orientation = 0;    ///< degrees, nominal angle included
};

/// Of a 2x2 cell, in any order that the caller keeps.
using CellResponse = std::array<PixelResponse, 4>;
using CellSamples = std::array<double, 4>;      ///< counts above each pixel's black level
using StokesValues = std::array<double, 3>;     ///< S0, S1, S2, counts
using AnalyserMatrix = std::array<double, 12>;  ///< 4 rows of 3: samples of Stokes values
using StokesMatrix = std::array<double, 12>;    ///< 3 rows of 4: Stokes values of samples

/// Rows G / 2 (1, D cos(2a), D sin(2a)).
AnalyserMatrix analyser_matrix(const CellResponse& cell);

/// Its pseudo-inverse, which is least squares for four samples of equal noise. All zeros for a cell
/// whose pixels do not determine three Stokes values.
StokesMatrix stokes_matrix(const CellResponse& cell);

/// By a matrix of stokes_matrix() and samples in the order of its cell.
StokesValues stokes_of_cell(const StokesMatrix& matrix, const CellSamples& samples);

/// Largest over smallest singular value: how much of the samples' errors may come to be in the
/// Stokes values. That of four ideal polarizers is sqrt(2), infinity that of a singular matrix.
double condition_of(const AnalyserMatrix& matrix);

/// The mean response of each class: 0, 45, 90 and 135 degrees.
CellResponse class_responses(const Calibration& calibration);

/// The mean sensor as weights of the library's Stokes estimate: the four classes' differences are
/// taken off in every cell, those from pixel to pixel stay. Weights know no black level.
Weights library_weights(const CellResponse& classes);
Weights library_weights(const Calibration& calibration);

}  // namespace kv::polarization
