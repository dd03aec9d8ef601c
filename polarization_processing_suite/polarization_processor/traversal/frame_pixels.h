#pragma once

#include <cstddef>
#include <cstdint>

#include "coefficient_set.h"
#include "pixel/pixel_function.h"

namespace kv {

/// The pixels of one frame, each evaluated by its shape and an entry of the phase view.
template <EncodingAxes encoding>
struct FramePixels {
  const TransformRequest& request;
  const PhaseView& view;
  const PlaneFrame& planes;

  template <BoundaryShape shape>
  void operator()(shapes::Tag<shape>, std::uint64_t row, std::uint64_t column,
                  std::size_t entry) const {
    pixel_function<encoding, shape>(row, column, *view[entry], request, planes);
  }
};

}  // namespace kv
