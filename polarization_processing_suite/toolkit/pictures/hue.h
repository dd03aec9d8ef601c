#pragma once

#include <array>

namespace kv {

/// Red, green and blue from 0 to 1 of the full colour that stands for an angle of linear
/// polarization in degrees, of any range.
std::array<float, 3> hue_of_angle(double degrees);

}  // namespace kv
