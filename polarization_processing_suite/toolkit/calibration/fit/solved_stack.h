// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "toolkit/calibration/fit/stack_intake.h"

namespace kv::polarization {

/// What all frames of a stack tell; throws as CalibrationFit::finish does.
Calibration solve_stack(const FitSettings& settings, StackIntake& intake, const FrameAgain& again,
                        WorkerPool& pool);

}  // namespace kv::polarization
