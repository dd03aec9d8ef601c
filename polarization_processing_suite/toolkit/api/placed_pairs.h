// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <span>

#include "kv/polarization/buffer.h"
#include "toolkit/api/library_call.h"

namespace kv::polarization {

/// Whether the library packs the pairs of such a frame one behind the other, rather than leaving
/// each at the place of its pixel. The C header tells how.
constexpr bool packs_pairs(int width, int height) { return width >= 8 && height >= 5; }

/// Memory of the work, kept from frame to frame.
struct PairScratch {
  Buffer<float> packed;
  Buffer<std::uint16_t> right_columns;
};

/// Fills normalized_stokes in rows `first` to `last` - 1 of a frame whose pairs the library packs,
/// every pair at the place of its pixel: by a few calls whose results are moved. `first` is even,
/// and `last` is even or the end of the frame, and at least 4 more.
void fill_placed_pairs(PolarizationProcessor* handle, const FramePart& frame, int first, int last,
                       std::span<float> pairs, PairScratch& scratch);

}  // namespace kv::polarization
