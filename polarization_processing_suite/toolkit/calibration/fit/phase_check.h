// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "kv/polarization/mosaic.h"
#include "toolkit/calibration/fit/class_light.h"

namespace kv::polarization {

/// Throws Fault of kind argument, with what would fit, when the classes' orientations as the source
/// tells them lie more than 20 degrees from their nominal ones.
void check_phase(const ClassResponses& responses, const Mosaic& mosaic);

}  // namespace kv::polarization
