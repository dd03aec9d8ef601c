// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "kv/polarization/frame.h"
#include "kv/polarization/mosaic.h"
#include "kv/polarization/planes.h"

namespace kv::polarization {

/// The planes that have a place to be put at.
OutputSet wanted_of(const PlaneViews& planes);

/// Throws Fault of kind argument for whatever a transform cannot take, and the library would not
/// refuse by itself or not in words.
void check_request(const FrameView& frame, const Mosaic& mosaic, const PlaneViews& planes);

/// Its parts: whether the frame holds a 2x2 cell, whether the library can tell the mosaic of each
/// of its pixels, and the polarizers.
void check_mosaic_frame(const FrameView& frame);
void check_cells(const FrameView& frame);
void check(const Mosaic& mosaic);

}  // namespace kv::polarization
