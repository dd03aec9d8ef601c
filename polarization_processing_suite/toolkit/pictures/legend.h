#pragma once

#include "kv/polarization/picture.h"

namespace kv::polarization {

/// Width of the legend of an angle picture of that height; 0 where a legible one does not fit.
int angle_legend_width(int picture_height);

/// Draws the legend from column `left` to the right edge: a wheel whose hues stand for the angles
/// at its rim, and whose radius for DoLP, from 0 in the centre to dolp_white at the rim.
void draw_angle_legend(Picture& picture, int left, double dolp_white);

}  // namespace kv::polarization
