// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "kv/pictures/picture_maps.h"

namespace kv::polarization {

/// The DoLP to show as white, or in full colour, in pictures of this frame: its 99th percentile,
/// rounded up to a multiple of 0.05, from 0.05 to 1. Real scenes are near black with 1.
double dolp_white_of(const PictureMaps& maps);

/// The S1/S0 and S2/S0 to show at the ends of a symmetric range: the 99th percentile of the
/// magnitudes of both, so that the two pictures compare, rounded up as DoLP is. NaNs do not count.
double ratio_limit_of(const PictureMaps& maps);

/// The ranges of a frame's pictures.
struct PictureRanges {
  double dolp_white = 1;   ///< above 0, up to 1
  double ratio_limit = 1;  ///< above 0, up to 1
};

/// Both, where the map is there; 1 where it is not. Some 10 to 30 ms for 5 megapixels.
PictureRanges ranges_of(const PictureMaps& maps);

}  // namespace kv::polarization
