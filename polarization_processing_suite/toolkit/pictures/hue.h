#pragma once

#include <array>

namespace kv::polarization {

/// Red, green and blue, from 0 to 1, of the pure colour that stands for an angle of linear
/// polarization. Angles in degrees that differ by 180 have the same colour.
std::array<float, 3> hue_of_angle(double degrees);

}  // namespace kv::polarization
