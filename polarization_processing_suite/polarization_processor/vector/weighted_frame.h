// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <array>
#include <cstddef>

#include "polarization_processor/pixel/plane_frame.h"
#include "polarization_processor/records/coefficient_set.h"
#include "polarization_processor/records/transform_request.h"

namespace kv {

/// One row of the four sets of a view, by neighbour and cell position: the weights of one neighbour
/// side by side for TL, TR, BL, BR.
struct alignas(16) CellWeightRow {
  std::array<std::array<float, 4>, 4> by_neighbour;
};

struct CellWeights {
  CellWeightRow s0, s1, s2;

  explicit CellWeights(const PhaseView& view) {
    for (std::size_t position = 0; position < 4; ++position) {
      for (std::size_t neighbour = 0; neighbour < 4; ++neighbour) {
        s0.by_neighbour[neighbour][position] = view[position]->s0_weights[neighbour];
        s1.by_neighbour[neighbour][position] = view[position]->s1_weights[neighbour];
        s2.by_neighbour[neighbour][position] = view[position]->s2_weights[neighbour];
      }
    }
  }
};

/// A frame as the part of it that takes the instance's weights is evaluated: all but the vector
/// blocks.
struct WeightedFrame {
  const TransformRequest& request;
  const PhaseView& view;
  PlaneFrame planes;
  CellWeights weights;

  WeightedFrame(const TransformRequest& of, const PhaseView& by)
      : request(of), view(by), planes(of), weights(by) {}
};

}  // namespace kv
