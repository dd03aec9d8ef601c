#pragma once

#include <cstddef>
#include <cstdint>

#include "polarization_processor/pixel/pixel_function.h"
#include "polarization_processor/traversal/weighed_frame.h"

namespace kv {

/// Single pixels of one frame, each evaluated by its shape and an entry of the view.
template <EncodingAxes encoding>
class FramePixels {
 public:
  explicit FramePixels(const WeighedFrame& frame) : frame_(frame) {}

  template <BoundaryShape shape>
  void operator()(shapes::Tag<shape>, std::uint64_t row, std::uint64_t column,
                  std::size_t entry) const {
    pixel_function<encoding, shape>(row, column, *frame_.view[entry], frame_.request,
                                    frame_.planes);
  }

 private:
  const WeighedFrame& frame_;
};

}  // namespace kv
