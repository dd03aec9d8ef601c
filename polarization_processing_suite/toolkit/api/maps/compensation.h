// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "kv/polarization/maps.h"
#include "toolkit/api/library_call.h"
#include "toolkit/api/maps/cell_chunk.h"

namespace kv::polarization {

/// Multiplies the samples of each pixel by the gains of the intensity compensation, which it keeps
/// in the chunk, and flags the pixels that are too dark.
void compensate(const FramePart& frame, const MapSettings& settings, CellChunk& chunk);

}  // namespace kv::polarization
