#pragma once

#include "kv/polarization/frame.h"
#include "kv/polarization/picture.h"
#include "kv/polarization/planes.h"

namespace kv::polarization {

/// The brightness of the scene: the mean of each pixel and its three neighbours, in which the
/// mosaic does not show and which, unlike the intensity plane, is never above full scale. Black is
/// 0, white the level that one pixel in 500 exceeds, encoded for displays as sRGB.
Picture intensity_picture(const Frame& frame);

/// Degree of linear polarization from 0, black, to dolp_white, white, linearly.
Picture dolp_picture(const Planes& planes, double dolp_white);

/// Angle of linear polarization as hue, degree of linear polarization as brightness, and a legend
/// beside the picture. The hues go round once in 180 degrees: 0, along the rows, is red, and
/// counter-clockwise 45 is yellow-green, 90 cyan, 135 violet. Brightness is DoLP from 0 to
/// dolp_white, linearly. Frames too small for a legible legend have none.
Picture angle_picture(const Planes& planes, double dolp_white);

}  // namespace kv::polarization
