#pragma once

#include "toolkit/picture.h"

namespace kv {

/// Width of the panel that explains an angle picture of that height; 0 where none fits.
int angle_legend_width(int picture_height);

/// Fills the panel right of column `left`: a wheel of hues with its angles, whose radius is DoLP
/// from 0 in the centre to dolp_white at the rim.
void draw_angle_legend(Picture& picture, int left, double dolp_white);

}  // namespace kv
