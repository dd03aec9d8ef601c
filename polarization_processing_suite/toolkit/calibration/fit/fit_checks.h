// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "kv/calibration/calibration_fit.h"
#include "toolkit/calibration/fit/stack.h"

namespace kv::polarization {

/// Angles modulo 180 degrees that are closer are one.
inline constexpr double kSameAngle = 0.5;

// All throw Fault of kind argument.

void check(const FitSettings& settings);

/// Whether the frames that are used, whose lights these are, determine a sensor; with angles that
/// are not known, only whether there are enough.
void check_angles_determine(const Stack& stack, const std::vector<ClassLight>& lights, bool known);

/// Whether the frame whose angle is known is used.
void check_known_angle(const Stack& stack);

}  // namespace kv::polarization
