// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <optional>

#include "kv/calibration/calibration.h"
#include "toolkit/calibration/fit/pixel_solution.h"
#include "toolkit/calibration/fit/sensor_noise.h"

namespace kv::polarization {

/// All that the checks look at.
struct FitEvidence {
  const PixelGrid& grid;
  const PixelSums& sums;
  const Stack& stack;
  const ClassNormal::Source& source;
  double gain;           ///< of the noise, counts per electron
  double dark_variance;  ///< of a sample, counts squared
};

/// Rms errors of light of full polarization, over cells and angles.
struct LightErrors {
  double dolp = 0;
  double angle = 0;  ///< degrees
};

/// Cells without a bad pixel, all or evenly chosen ones of many.
std::vector<std::array<std::size_t, 4>> good_cells(const PixelGrid& grid,
                                                   const Buffer<std::uint8_t>& bad);

/// Errors of the cells' responses by all frames, taken for ideal polarizers and equal gains.
LightErrors uncalibrated_errors(const FitEvidence& evidence, const Calibration& calibration);

struct CrossValidation {
  LightErrors found;     ///< responses by one half of the frames, corrected as the other tells
  LightErrors expected;  ///< by the noise of both halves
};

/// Nothing where the angles of a half do not determine the sensor. Errors of a calibration by all
/// frames are half as large.
std::optional<CrossValidation> cross_validate(const FitEvidence& evidence,
                                              const Calibration& calibration);

/// Corrected flats, S1 / S0 and S2 / S0 as the sensor sees them.
struct FlatCheck {
  double scatter = 0;       ///< from cell to cell: rms distance from the mean
  double expected = 0;      ///< of the scatter, by noise of flats and of the calibration
  double mean = 0;          ///< length of the mean: polarization of the source, or of the fit
  double uncalibrated = 0;  ///< rms DoLP with ideal polarizers and equal gains
};

/// Nothing without flats.
std::optional<FlatCheck> check_flats(const FitEvidence& evidence, const Calibration& calibration);

}  // namespace kv::polarization
