#include "toolkit/pictures/hue.h"

#include <algorithm>
#include <cmath>

namespace kv::polarization {

std::array<float, 3> hue_of_angle(double degrees) {
  // 180 degrees lead once round the six edges of the colour hexagon.
  const double turn = degrees / 180.0 - std::floor(degrees / 180.0);
  const auto channel = [turn](double peak) {
    const double distance = std::abs(turn * 6.0 - peak);
    return static_cast<float>(std::clamp(2.0 - std::min(distance, 6.0 - distance), 0.0, 1.0));
  };
  return {channel(0.0), channel(2.0), channel(4.0)};
}

}  // namespace kv::polarization
