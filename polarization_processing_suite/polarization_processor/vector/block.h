#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>

#include "polarization_processor/vector/block_formulas.h"
#include "polarization_processor/vector/blocks.h"

namespace kv {

/// The blocks of a row pair. `Form` tells how samples get into lanes and results into the planes:
///
///   Vector                                                    four floats
///   RowSamples<Vector> load(const std::uint16_t* samples)     from samples[0] to samples[7]
///   void store(std::uint16_t* plane, Vector bounded)          rounded to four elements
///   void store_pairs(float* pairs, Vector first, Vector second)   interleaved
///
/// It lives in an unnamed namespace of its file, and so does all that is made of it here.
template <class Form, BlockAxes axes>
struct Block {
  using Vector = typename Form::Vector;
  static constexpr OutputSet outputs = axes.encoding.outputs;

  // A copy: stores through vector types may alias anything but a local variable.
  const TransformRequest request;
  const Vector half_factor, output_ceiling, azimuth_scale, input_reciprocal;

  Block(const TransformRequest& from, const BlockConstants& constants)
      : request(from),
        half_factor(Vector::all(constants.half_factor)),
        output_ceiling(Vector::all(constants.output_ceiling)),
        azimuth_scale(Vector::all(constants.azimuth_scale)),
        input_reciprocal(Vector::all(constants.input_reciprocal)) {}

  void evaluate(const BlockPosition& at) const {
    const auto upper_samples = Form::load(request.input + at.upper_index);
    const auto lower_samples = Form::load(request.input + at.lower_index);
    const auto below_samples = Form::load(request.input + at.below_index);
    const auto upper = block_stokes<axes.phase>(upper_samples, lower_samples, half_factor);
    const auto lower = block_stokes<axes.phase>(below_samples, lower_samples, half_factor);

    if constexpr (outputs.normalized_stokes) {
      store_ratios(request.normalized_stokes + at.upper_pair_cursor, upper);
      if (at.lower_pairs_stay) {
        store_ratios(request.normalized_stokes + at.lower_pair_cursor, lower);
      }
    }
    const auto quantise = [&](std::uint16_t* plane, Vector upper_value, Vector lower_value) {
      Form::store(plane + at.upper_index, clamp(upper_value, output_ceiling));
      Form::store(plane + at.lower_index, clamp(lower_value, output_ceiling));
    };
    if constexpr (outputs.intensity) {
      quantise(request.intensity, in_output_units(upper.s0), in_output_units(lower.s0));
    }
    if constexpr (outputs.stokes_s1) {
      quantise(request.stokes_s1, in_output_units(upper.s1), in_output_units(lower.s1));
    }
    if constexpr (outputs.stokes_s2) {
      quantise(request.stokes_s2, in_output_units(upper.s2), in_output_units(lower.s2));
    }
    if constexpr (outputs.azimuth) {
      quantise(request.azimuth, azimuth_value(upper.s1, upper.s2, azimuth_scale),
               azimuth_value(lower.s1, lower.s2, azimuth_scale));
    }
    if constexpr (outputs.dolp) {
      quantise(request.dolp, dolp_value(upper, output_ceiling), dolp_value(lower, output_ceiling));
    }
  }

 private:
  Vector in_output_units(Vector value) const {
    if constexpr (axes.encoding.scaled) {
      return (value * output_ceiling) * input_reciprocal;
    } else {
      return value;
    }
  }

  static void store_ratios(float* pairs, const BlockStokes<Vector>& stokes) {
    Form::store_pairs(pairs, stokes.s1 / stokes.s0, stokes.s2 / stokes.s0);
  }
};

template <class Form, BlockAxes axes>
void run_blocks(const TransformRequest& request, const BlockConstants& constants,
                std::uint64_t count, BlockPosition position) {
  const Block<Form, axes> block(request, constants);
  do {
    block.evaluate(position);
    advance(position, 1);
  } while (--count != 0);
}

template <class Form, std::size_t... index>
constexpr BlockTable block_table(std::index_sequence<index...>) {
  return {{&run_blocks<Form, kBlockVariants[index]>...}};
}

}  // namespace kv
