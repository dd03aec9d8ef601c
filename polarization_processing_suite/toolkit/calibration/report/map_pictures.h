// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <array>
#include <string>
#include <vector>

#include "toolkit/calibration/report/indexed_image.h"
#include "toolkit/calibration/report/pixel_properties.h"

namespace kv::polarization {

/// A map of one class of pixels, reduced to means of square blocks, up to 240 a side.
struct ReducedMap {
  int width = 0;
  int height = 0;
  int block = 1;               ///< pixels of the class along a side
  std::vector<double> values;  ///< NaN where a block has no good pixel
};

/// Deviations of good pixels from the mean of their class, of all four classes, in the property's
/// unit.
std::array<ReducedMap, 4> reduced_maps(const Calibration& calibration,
                                       const PixelProperty& property,
                                       const std::array<PropertySample, 4>& samples);

/// The end of a scale about 0 that takes in 99 per cent of the values of all maps, at 1, 2 or 5
/// times a power of ten.
double scale_end(const std::array<ReducedMap, 4>& maps);

/// In diverging colours from -end to end; grey where there is no value.
IndexedImage diverging_image(const ReducedMap& map, double end);

/// How many pixels of each block are bad, in blocks of the whole frame, up to 320 a side: from
/// nearly white, none, to dark red, the most in a block. A single one stands out.
struct BadPixelMap {
  IndexedImage image;
  int block = 1;  ///< pixels along a side
  int most = 0;   ///< bad pixels in a block
};
BadPixelMap bad_pixel_map(const Calibration& calibration);

}  // namespace kv::polarization
