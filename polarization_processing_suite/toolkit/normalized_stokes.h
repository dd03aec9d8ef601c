#pragma once

#include "toolkit/frame.h"
#include "toolkit/library_call.h"
#include "toolkit/planes.h"

namespace kv {

/// Whether the library packs the pairs of such a frame one behind the other, rather than leaving
/// each at the place of its pixel. Its header tells how.
constexpr bool packs_pairs(const Frame& frame) { return frame.width >= 8 && frame.height >= 5; }

/// Fills normalized_stokes of a frame whose pairs the library packs, every pair at the place of its
/// pixel, by a few calls whose results are moved. Room has been made in `planes`.
void fill_normalized_stokes(PolarizationProcessor* handle, const Frame& frame,
                            const TransformSettings& settings, Planes& planes);

}  // namespace kv
