// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "planes.h"

#include <algorithm>
#include <cstring>
#include <iomanip>
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
  for (const PlaneTraits& traits : kPlanes) {
    const Plane plane = traits.plane;
    const std::vector<unsigned char>& found = actual.bytes(plane);
    const std::vector<unsigned char> untouched(wanted.has(plane) ? 0 : found.size(), Planes::kFill);
    const std::vector<unsigned char>& right = wanted.has(plane) ? expected.bytes(plane) : untouched;
    if (found == right) continue;

    const auto first = std::ranges::mismatch(found, right).in1 - found.begin();
    const std::size_t size = element_size(plane);
    const std::size_t offset = static_cast<std::size_t>(first) / size * size;
    const std::size_t place = offset - Planes::kGuard;  // Wraps around in the guard before.
    const std::size_t pixel = place / pixel_size(plane);
    const auto element_of = [&](const std::vector<unsigned char>& bytes) {
      return traits.element == PlaneElement::level ? value_at<std::uint16_t>(bytes, offset)
                                                   : value_at<float>(bytes, offset);
    };
    std::ostringstream text;
    text << std::setprecision(9) << traits.name
         << (wanted.has(plane) ? "" : ", which is not requested") << ", byte "
         << static_cast<std::ptrdiff_t>(place) << ", row " << pixel / width << ", column "
         << pixel % width << ": expected " << element_of(right) << ", actual " << element_of(found);
    return text.str();
  }
  return {};
}

}  // namespace kv::test
