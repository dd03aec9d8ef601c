// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <cstdint>

#include "polarization_processor/pixel/pixel_function.h"
#include "polarization_processor/vector/weighted_frame.h"

namespace kv {

/// One pixel with the weights of an entry of the view.
template <EncodingAxes encoding, BoundaryShape shape>
void evaluate_pixel(const WeightedFrame& frame, std::uint64_t row, std::uint64_t column,
                    std::size_t entry) {
  pixel_function<encoding, shape>(row, column, *frame.view[entry], frame.request, frame.planes);
}

}  // namespace kv
