// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "kv/calibration/calibration_fit.h"
#include "toolkit/calibration/fit/cell_checks.h"

namespace kv::polarization {

/// What the fit learnt beside the calibration.
struct FitFigures {
  NoiseSource noise{};
  double dark_variance = 0;    ///< of a sample, counts squared
  double black_variance = 0;   ///< of a pixel's black level, counts squared
  double level_deviation = 0;  ///< of the lamp from a steady drift, a share; with solved angles
};

/// Writes the lines of the verdict.
void add_findings(const FitEvidence& evidence, const FitSettings& settings,
                  const FitFigures& figures, Calibration& calibration);

}  // namespace kv::polarization
