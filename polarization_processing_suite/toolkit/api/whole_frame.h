// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "kv/polarization/buffer.h"
#include "toolkit/api/library_call.h"
#include "toolkit/api/placed_pairs.h"

namespace kv::polarization {

/// Memory of the work of one thread, kept from frame to frame.
struct StripScratch {
  PairScratch pairs;
  Buffer<std::uint16_t> levels;   ///< of some rows of the 16-bit planes
  Buffer<float> loose_pairs;      ///< of the same rows
  Buffer<std::uint16_t> samples;  ///< of row pairs side by side
};

/// Whether rows of such a frame can be filled apart from others.
constexpr bool can_be_cut(int width, int height) { return packs_pairs(width, height); }

/// Fewest rows of a strip.
inline constexpr int kLeastStrip = 4;

/// Fill rows `first` to `last` - 1 of planes, and touch no other: `first` is even, and `last` even
/// or the end of the frame. A frame that cannot be cut is one strip; those of others have
/// kLeastStrip rows or more.

/// With the bytes of one call of the library for the whole frame, and every pair at its place.
void fill_as_library(PolarizationProcessor* handle, const FramePart& frame, int first, int last,
                     const PlaneViews& planes, StripScratch& scratch);

/// With the processor's weights in every pixel. Pixels of rows 2n and 2n + 1 are made of the
/// samples of these two rows alone; those of the last two rows of an odd height, of the last two.
void fill_with_weights(PolarizationProcessor* handle, const FramePart& frame, int first, int last,
                       const PlaneViews& planes, StripScratch& scratch);

}  // namespace kv::polarization
