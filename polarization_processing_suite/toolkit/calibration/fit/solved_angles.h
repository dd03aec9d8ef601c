// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <optional>
#include <vector>

#include "toolkit/calibration/fit/class_light.h"

namespace kv::polarization {

/// Finds the angles of all frames but the first, in the order of time, from their class means:
/// writes them to `frames`. `unpolarized` are class means of flats, counts above black. See
/// FitSettings::angles_known for what is assumed without them. Returns the rms deviation of the
/// light levels from a steady drift, as a share. Throws Fault of kind argument for frames that do
/// not determine the angles.
double solve_angles(std::vector<ClassLight>& frames,
                    const std::optional<Eigen::Vector4d>& unpolarized);

}  // namespace kv::polarization
