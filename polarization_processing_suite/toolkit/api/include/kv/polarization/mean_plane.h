// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "kv/polarization/frame.h"

namespace kv::polarization {

/// Fills a 16-bit plane with the mean of the four samples of each pixel's 2x2 neighbourhood, which
/// is S0 / 2, rounded to the nearest count, halves up. Unlike the plane intensity it never clips:
/// it has the range of the samples. The black level is left in it.
///
/// Throws Fault of kind argument for a frame that check() refuses or that has a side below 2, a
/// plane smaller than the frame, and for shared memory. 2 ms for 5 megapixels.
void fill_mean_plane(const FrameView& frame, std::span<std::uint16_t> mean);

/// How many pixels the plane intensity would clip: those with S0 above the greatest sample of the
/// bit depth, whatever the plane's output_max, which stands for that sample. (In most of a frame
/// the library computes S0 0.024 per cent low, so that pixels just above may not be clipped.)
///
/// Throws Fault of kind argument for a frame that check() refuses or that has a side below 2.
std::size_t count_clipped_intensity(const FrameView& frame);

}  // namespace kv::polarization
