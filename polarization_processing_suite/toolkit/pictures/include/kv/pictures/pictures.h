// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "kv/pictures/colours.h"
#include "kv/pictures/picture_maps.h"
#include "kv/polarization/picture.h"

namespace kv::polarization {

// Pictures of the frame alone, pixel by pixel; legend.h puts the legend beside them. All throw
// Fault of kind argument for a missing map and for a range that does not end above 0 and up to 1.
// Each builds its tables anew and takes some 5 to 20 ms for 5 megapixels on one core.

/// The brightness that an intensity picture shows as white, in levels of the map: that which one
/// pixel in 500 exceeds, at least 1.
std::uint16_t brightness_white_of(const PictureMaps& maps);

/// Brightness from 0, black, to white, encoded for displays as sRGB. Grey.
Picture intensity_picture(const PictureMaps& maps);

/// DoLP from 0, black, to dolp_white, white, linearly. Grey.
Picture dolp_picture(const PictureMaps& maps, double dolp_white);

/// Angle as hue; DoLP, from 0 to dolp_white, as value or saturation. Colour.
Picture angle_picture(const PictureMaps& maps, double dolp_white, AngleStyle style = {});

/// Which Stokes value is shown, over S0.
enum class StokesRatio : std::uint8_t { s1, s2 };

/// S1/S0 or S2/S0 in diverging colours from -limit to limit; NaN is shown as 0. Colour.
Picture ratio_picture(const PictureMaps& maps, StokesRatio ratio, double limit);

}  // namespace kv::polarization
