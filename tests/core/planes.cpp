#include "planes.h"

#include <iomanip>
#include <sstream>

namespace kv::test {
namespace {

constexpr std::size_t kRatios = 0;  ///< The one plane of floats, two a pixel.

std::string element_at(std::span<const unsigned char> bytes, std::size_t plane,
                       std::size_t element) {
  std::ostringstream text;
  if (plane == kRatios) {
    float value = 0;
    std::uint32_t bits = 0;
    std::memcpy(&value, bytes.data() + element * sizeof value, sizeof value);
    std::memcpy(&bits, &value, sizeof bits);
    text << std::setprecision(9) << value << " (0x" << std::hex << bits << ")";
  } else {
    std::uint16_t value = 0;
    std::memcpy(&value, bytes.data() + element * sizeof value, sizeof value);
    text << value;
  }
  return text.str();
}

std::string place_of(std::size_t element, std::size_t elements, std::size_t plane,
                     std::size_t width) {
  constexpr std::size_t guard = GuardedPlane<float>::kGuard;
  const std::size_t per_pixel = plane == kRatios ? 2 : 1;
  std::ostringstream text;
  if (element < guard) {
    text << guard - element << " elements before the plane";
  } else if (element >= elements - guard) {
    text << element - (elements - guard) + 1 << " elements behind the plane";
  } else {
    const std::size_t pixel = (element - guard) / per_pixel;
    text << "row " << pixel / width << ", column " << pixel % width;
    if (plane == kRatios) text << ", ratio " << (element - guard) % per_pixel + 1;
  }
  return text.str();
}

}  // namespace

std::string difference(const Planes& actual, const Planes& expected, std::size_t width,
                       PlaneNumber wanted) {
  const std::vector<unsigned char> untouched(expected.bytes()[kRatios].size(),
                                             GuardedPlane<float>::kFill);
  for (std::size_t plane = 0; plane < kPlaneCount; ++plane) {
    const bool is_wanted = (wanted >> plane & 1) != 0;
    const auto found = actual.bytes()[plane];
    const auto right =
        is_wanted ? expected.bytes()[plane] : std::span(untouched).first(found.size());
    if (std::memcmp(found.data(), right.data(), found.size()) == 0) continue;

    const auto first = std::ranges::mismatch(found, right).in1 - found.begin();
    const std::size_t element_size = plane == kRatios ? sizeof(float) : sizeof(std::uint16_t);
    const std::size_t element = static_cast<std::size_t>(first) / element_size;
    return std::string(kPlaneNames[plane]) + (is_wanted ? "" : ", which is not requested") +
           ", first at " + place_of(element, found.size() / element_size, plane, width) +
           ": expected " + element_at(right, plane, element) + ", actual " +
           element_at(found, plane, element);
  }
  return {};
}

}  // namespace kv::test
