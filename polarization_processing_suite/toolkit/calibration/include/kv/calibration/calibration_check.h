// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "kv/calibration/calibration.h"

namespace kv::polarization {

/// Pixels of a side of a calibrated region, at most.
inline constexpr int kGreatestSide = 1 << 14;

/// Condition number of the mean analyser matrix from which on Stokes values would drown in noise.
inline constexpr double kWorstCondition = 20;

/// Throws Fault of kind argument for what no calibration can be, the first thing found: sides that
/// are odd, not above 0 or above kGreatestSide, maps of another size, an unknown phase or a
/// negative origin, a bit depth or clip level out of range, numbers that are not finite, classes or
/// good pixels of impossible values, a sensor that cannot tell polarization. About 10 ms a
/// megapixel.
void check(const Calibration& calibration);

/// The sides alone, before anybody asks for memory for maps.
void check_sides(const Calibration& calibration);

}  // namespace kv::polarization
