// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "kv/polarization/frame.h"
#include "kv/polarization/mosaic.h"
#include "kv/polarization/quality.h"

namespace kv::polarization {

/// A part of a frame.
struct Rectangle {
  int column = 0;  ///< of its left pixels
  int row = 0;     ///< of its upper pixels
  int width = 0;   ///< pixels, 2 at least
  int height = 0;  ///< pixels, 2 at least
};

/// The light of a region as one measurement: Stokes values are added up first, and DoLP and angle
/// are those of the sum. (The mean of angles is no angle: that of 89 and -89 degrees is not 0.)
///
/// A region is counted in whole 2x2 cells that share no sample, so that errors are independent and
/// add up. Cells with a bad pixel, or clipped ones that could not be rescued, are left out.
/// It takes some 5 ns a pixel.
struct RegionStatistics {
  std::size_t cells = 0;     ///< counted
  std::size_t left_out = 0;  ///< cells of the region that were not counted
  std::size_t clipped = 0;   ///< cells with a clipped sample, rescued or not
  std::size_t rescued = 0;   ///< of these, the rescued ones; they are counted
  std::size_t bad = 0;       ///< cells with a bad pixel

  /// Means over the cells counted, in counts above black; NaN without cells.
  double s0 = 0;
  double s1 = 0;
  double s2 = 0;

  /// Of these means. NaN where S0 is not above 0, and without cells.
  double dolp = 0;
  double angle = 0;  ///< degrees, above -90 up to 90

  /// By the noise of the samples, as in the maps; NaN without it. What differs within the region,
  /// and what is wrong with the sensor as a whole, is not in them.
  double debiased_dolp = 0;
  double s0_sigma = 0;
  double s1_sigma = 0;
  double s2_sigma = 0;
  double dolp_sigma = 0;
  double angle_sigma = 0;  ///< degrees; NaN where DoLP is less than 3 of its sigma
};

/// Of the cells from the rectangle's upper left pixel on; a last odd column or row is not counted.
///
/// Throws Fault of kind argument for a frame, a mosaic or settings that MapMaker would refuse, and
/// for a rectangle that reaches beyond the frame or holds no cell.
RegionStatistics region_statistics(const FrameView& frame, const Mosaic& mosaic,
                                   const SampleSettings& settings, const Rectangle& region);

/// Of the cells from the frame's upper left pixel on whose four pixels are all within the mask: one
/// byte a pixel, row by row without gaps, not 0 within.
///
/// Throws Fault as above, and for a mask of a size other than the frame's.
RegionStatistics region_statistics(const FrameView& frame, const Mosaic& mosaic,
                                   const SampleSettings& settings,
                                   std::span<const std::uint8_t> mask);

}  // namespace kv::polarization
