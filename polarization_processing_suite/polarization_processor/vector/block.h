// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>

#include "polarization_processor/pixel/output_encoding.h"
#include "polarization_processor/vector/block_formulas.h"
#include "polarization_processor/vector/blocks.h"

namespace kv {

/// One block at a time. `Lanes` tells how samples get into lanes and results into the planes:
///
///   Vector                                                    four floats
///   RowSamples<Vector> load(const std::uint16_t* samples)     from samples[0] to samples[7]
///   void store(std::uint16_t* plane, Vector bounded)          rounded to four elements
template <class Lanes, BlockAxes axes>
class Block {
 public:
  Block(const TransformRequest& from, const BlockConstants& constants)
      : request_(from),
        half_factor_(Vector::all(constants.half_factor)),
        output_ceiling_(Vector::all(constants.output_ceiling)),
        azimuth_scale_(Vector::all(constants.azimuth_scale)),
        input_reciprocal_(Vector::all(constants.input_reciprocal)) {}

  void evaluate(const BlockPosition& at) const {
    const auto upper = Lanes::load(request_.input + at.upper_index);
    const auto lower = Lanes::load(request_.input + at.lower_index);
    const auto below = Lanes::load(request_.input + at.below_index);
    encode<axes.encoding>(block_stokes<axes.phase>(upper, lower, half_factor_),
                          Row{*this, at.upper_index, at.upper_pair_cursor, true});
    encode<axes.encoding>(block_stokes<axes.phase>(below, lower, half_factor_),
                          Row{*this, at.lower_index, at.lower_pair_cursor, at.lower_pairs_stay});
  }

 private:
  using Vector = typename Lanes::Vector;

  /// Where the pixels of one of the two rows go.
  struct Row {
    const Block& block;
    std::uint64_t index, pair_cursor;
    bool pairs_stay;

    void store_ratios(const Stokes<Vector>& stokes) const {
      if (!pairs_stay) return;
      store_pairs(block.request_.normalized_stokes + pair_cursor, stokes.s1 / stokes.s0,
                  stokes.s2 / stokes.s0);
    }
    template <Plane plane>
    void store(Vector value) const {
      constexpr auto levels = kLevelPlanes[index_of(plane)];
      Lanes::store(block.request_.*levels + index, clamp(value, block.output_ceiling_));
    }
    Vector scaled(Vector value) const {
      return scaled_by_reciprocal(value, block.output_ceiling_, block.input_reciprocal_);
    }
    Vector azimuth(Vector s1, Vector s2) const {
      return azimuth_degrees(s1, s2) * block.azimuth_scale_;
    }
    Vector dolp(const Stokes<Vector>& stokes) const {
      return dolp_value(stokes, block.output_ceiling_);
    }
  };

  // A copy: stores through vector types may alias anything but a local variable.
  const TransformRequest request_;
  const Vector half_factor_, output_ceiling_, azimuth_scale_, input_reciprocal_;
};

template <class Lanes, BlockAxes axes>
void run_single_blocks(const TransformRequest& request, const BlockConstants& constants,
                       std::uint64_t count, BlockPosition position) {
  const Block<Lanes, axes> block(request, constants);
  do {
    block.evaluate(position);
    advance(position, 1);
  } while (--count != 0);
}

}  // namespace kv
