// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <array>
#include <string>
#include <variant>
#include <vector>

#include "kv/pictures/colours.h"
#include "kv/pictures/pictures.h"
#include "kv/polarization/picture.h"

namespace kv::polarization {

/// A disc whose hues stand for the angles at its rim, and whose radius for DoLP.
struct AngleWheel {
  AngleStyle style;  ///< of the picture beside it
};

/// An upright bar from the first colour, at its lower end, to the last.
struct ScaleBar {
  std::vector<Colour> colours;         ///< at least one
  std::array<std::string, 3> marks{};  ///< at the lower end, the middle, the upper end
};

/// A colour and what it stands for.
struct Swatch {
  Colour colour;     ///< as it is in the picture
  std::string text;  ///< what it stands for
};

/// From the top down.
using Swatches = std::vector<Swatch>;

/// What stands beside a picture, from the top down. Texts are ASCII and the degree sign in UTF-8;
/// lines longer than 17 signs are wrapped.
struct Legend {
  std::string title;                                   ///< what is shown, and its unit
  std::variant<Swatches, ScaleBar, AngleWheel> scale;  ///< how to read the colours
  std::vector<std::string> notes;                      ///< lines below the scale
};

/// The legends of the pictures in pictures.h, for the same arguments. They name unit and range.
Legend intensity_legend(const PictureMaps& maps);
Legend dolp_legend(double dolp_white);
Legend angle_legend(double dolp_white, AngleStyle style = {});
Legend ratio_legend(StokesRatio ratio, double limit);

/// Width in pixels of a legend beside a picture of that height: about a quarter of the height, at
/// least 118; 0 where a legible one does not fit, in pictures of less than some 100 to 200 rows.
int legend_width(const Legend& legend, int picture_height);

/// The picture with the legend on the right: the picture's pixels keep their places. The legend of
/// a grey picture is grey. Pictures too small for a legible legend stay as they are.
Picture with_legend(Picture picture, const Legend& legend);

}  // namespace kv::polarization
