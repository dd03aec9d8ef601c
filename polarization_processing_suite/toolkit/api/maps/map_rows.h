// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "kv/polarization/maps.h"
#include "toolkit/api/library_call.h"

namespace kv::polarization {

/// Fills the rows from `first` up to but without `last` of maps that were checked. It reads the
/// frame and writes these rows alone, and keeps nothing: bands of rows may be filled on several
/// threads, and give the same bytes as the whole.
void map_rows(const FramePart& frame, const Mosaic& mosaic, const MapSettings& settings,
              const MapViews& maps, int first, int last);

}  // namespace kv::polarization
