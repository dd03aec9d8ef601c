#pragma once

#include "toolkit/calibration/fit/stack_intake.h"

namespace kv::polarization {

/// What all frames of a stack tell; throws as CalibrationFit::finish does.
Calibration solve_stack(const FitSettings& settings, StackIntake& intake, const FrameAgain& again,
                        WorkerPool& pool);

}  // namespace kv::polarization
