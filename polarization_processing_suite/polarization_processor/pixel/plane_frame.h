#pragma once

#include <cstdint>

#include "polarization_processor/records/transform_request.h"

namespace kv {

template <class Element>
struct PlaneOf {
  Element* data;         ///< Dense rows; null for a plane that is not wanted.
  std::uint64_t height;  ///< Rows.
  std::uint64_t width;   ///< Elements per row.

  Element& at(std::uint64_t row, std::uint64_t column) const { return data[row * width + column]; }
};

using InputDescriptor = PlaneOf<const std::uint16_t>;
using PlaneDescriptor = PlaneOf<std::uint16_t>;

/// The frame and its 16-bit planes as the evaluation of one pixel sees them.
struct PlaneFrame {
  InputDescriptor input;
  PlaneDescriptor intensity;
  PlaneDescriptor stokes_s1;
  PlaneDescriptor stokes_s2;
  PlaneDescriptor azimuth;
  PlaneDescriptor dolp;

  explicit PlaneFrame(const TransformRequest& request)
      : input(plane_of(request, request.input)),
        intensity(plane_of(request, request.intensity)),
        stokes_s1(plane_of(request, request.stokes_s1)),
        stokes_s2(plane_of(request, request.stokes_s2)),
        azimuth(plane_of(request, request.azimuth)),
        dolp(plane_of(request, request.dolp)) {}

 private:
  template <class Element>
  static PlaneOf<Element> plane_of(const TransformRequest& request, Element* data) {
    return {data, static_cast<std::uint64_t>(request.height),
            static_cast<std::uint64_t>(request.width)};
  }
};

}  // namespace kv
