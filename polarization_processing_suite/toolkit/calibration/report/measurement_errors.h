// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <array>

#include "kv/calibration/calibration.h"
#include "toolkit/calibration/report/pixel_properties.h"

namespace kv::polarization {

/// How far a pixel is from what an evaluation takes it for.
struct PixelDeviation {
  double gain = 0;           ///< relative
  double diattenuation = 0;  ///< absolute
  double orientation = 0;    ///< radians
};

/// What an evaluation of a 2x2 neighbourhood gets wrong about its four pixels.
struct CellDeviations {
  std::array<PixelDeviation, 4> common;   ///< the same for all pixels of a class
  std::array<PixelDeviation, 4> scatter;  ///< standard deviations from pixel to pixel
  double diattenuation = 1;               ///< that the evaluation takes polarizers to have
};

/// Of an evaluation that takes all pixels as ideal.
CellDeviations uncalibrated(const Calibration& calibration);

/// Of one by the maps, by their errors. The samples are those of kPixelProperties.
CellDeviations calibrated(const Calibration& calibration,
                          const std::array<std::array<PropertySample, 4>, 3>& samples);

/// Root mean squares over all angles of light.
struct StokesErrors {
  double dolp = 0;
  double angle = 0;  ///< degrees
};

/// Largest rms error of an angle: that of one by chance, 180 / sqrt(12).
inline constexpr double kChanceAngle = 51.96;

/// What is measured: light of intensity S0, in counts, and a DoLP above 0 and up to 1, in the mean
/// of so many frames.
struct Measurement {
  double s0 = 0;
  double dolp = 0;
  int frames = 1;
};

/// To first order, for one 2x2 neighbourhood, noise included.
StokesErrors errors_of(const CellDeviations& deviations, const SensorNoise& noise,
                       const Measurement& measurement);

}  // namespace kv::polarization
