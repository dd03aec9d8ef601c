#include "planes.h"

#include <algorithm>
#include <cstring>
#include <sstream>

namespace kv::test {
namespace {

template <class Value>
Value value_at(const std::vector<unsigned char>& bytes, std::size_t offset) {
  Value value;
  std::memcpy(&value, bytes.data() + offset, sizeof value);
  return value;
}

}  // namespace

Planes::Planes(std::size_t pixels) {
  for (const PlaneTraits& traits : kPlanes) {
    bytes_[index_of(traits.plane)].resize(pixels * pixel_size(traits.plane) + 2 * kGuard);
  }
  clear();
}

void Planes::clear() {
  for (auto& plane : bytes_) std::ranges::fill(plane, kFill);
}

int Planes::level(Plane plane, std::size_t pixel) const {
  return value_at<std::uint16_t>(bytes(plane), kGuard + pixel * pixel_size(plane));
}

std::array<float, 2> Planes::ratios(std::size_t pixel) const {
  constexpr Plane plane = Plane::normalized_stokes;
  return value_at<std::array<float, 2>>(bytes(plane), kGuard + pixel * pixel_size(plane));
}

bool Planes::untouched() const { return difference(*this, Planes(0), 1, OutputSet()).empty(); }

std::string difference(const Planes& actual, const Planes& expected, std::size_t width,
                       OutputSet wanted) {
  for (const auto& [plane, name, element, source] : kPlanes) {
    const std::vector<unsigned char>& found = actual.bytes(plane);
    const std::vector<unsigned char> untouched(wanted.has(plane) ? 0 : found.size(), Planes::kFill);
    const std::vector<unsigned char>& right = wanted.has(plane) ? expected.bytes(plane) : untouched;
    if (found == right) continue;

    const auto first = std::ranges::mismatch(found, right).in1 - found.begin();
    const std::ptrdiff_t size = static_cast<std::ptrdiff_t>(element_size(plane));
    const std::ptrdiff_t offset = first / size * size;
    const std::ptrdiff_t place = offset - static_cast<std::ptrdiff_t>(Planes::kGuard);
    const std::ptrdiff_t pixel = place / static_cast<std::ptrdiff_t>(pixel_size(plane));
    const std::ptrdiff_t columns = static_cast<std::ptrdiff_t>(width);
    std::ostringstream text;
    text << name << (wanted.has(plane) ? "" : ", which is not requested") << ", byte " << place
         << ", row " << pixel / columns << ", column " << pixel % columns;
    const auto element_of = [&](const std::vector<unsigned char>& bytes) {
      const auto at = static_cast<std::size_t>(offset);
      if (element == PlaneElement::level) {
        text << value_at<std::uint16_t>(bytes, at);
      } else {
        text << std::hexfloat << value_at<float>(bytes, at);
      }
    };
    text << ": expected ";
    element_of(right);
    text << ", actual ";
    element_of(found);
    return text.str();
  }
  return {};
}

}  // namespace kv::test
