// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "kv/polarization/maps.h"

namespace kv::polarization {

// Each throws Fault of kind argument for what its caller cannot take.

void check(const SampleSettings& settings, const FrameView& frame, const Mosaic& mosaic);

void check_request(const FrameView& frame, const Mosaic& mosaic, const MapSettings& settings,
                   const MapViews& maps);

}  // namespace kv::polarization
