// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <bit>
#include <cstdint>

#include "polarization_processor/pixel/output_encoding.h"
#include "polarization_processor/vector/blocks.h"
#include "polarization_processor/vector/prefetch.h"
#include "polarization_processor/vector/wide_formulas.h"

namespace kv {

/// One value for each of the three columns of a block that differ; the fourth repeats the third.
template <class T>
struct Columns {
  T column0, column1, column2;
};

template <class Function, class... T>
auto by_column(Function function, const Columns<T>&... values) {
  using Result = decltype(function(values.column0...));
  return Columns<Result>{function(values.column0...), function(values.column1...),
                         function(values.column2...)};
}

/// What a form asks memory for before it needs it.
enum class Prefetch {
  none,
  /// The rows that the next row pair is the first to touch: processors fetch ahead along a row by
  /// themselves, and not where the row after next begins. Measured on AMD's Zen 3 and Zen 4.
  next_row_pair,
  /// And lines ahead in the planes: a store waits for a line that is not at hand. Intel servers
  /// gain by it, cold planes most; a Zen 4 takes up to 5 per cent longer.
  next_row_pair_and_stores
};

/// Several blocks of the SSE4.1 form at a time: lane b of a vector stands for block b, and each of
/// a block's columns has a vector of its own. `Simd` gives the vector types of an instruction set:
///
///   kBlocks                     blocks, and so 32-bit lanes, at a time
///   kPrefetch
///   Float, Int                  lanes; arithmetic as free functions and operators
///   Words                       16-bit elements in the order of memory, half of a row's samples
///   load_pairs(samples)         for each block its first two samples and its last two, a pair to
///                               a lane with the earlier sample in the low half
///   store_columns(plane, Columns<Int>)      their low halves
///   store_from_0(plane, Columns<Int>)       negative numbers as 0; none is above 65535
///   store_pairs(pairs, Columns<Float> first, Columns<Float> second)
///   load_words, even_words, odd_words, store_words
template <class Simd, BlockAxes axes>
class WideBlocks {
 public:
  static constexpr std::uint64_t kColumns = Simd::kBlocks * kBlockColumns;

  WideBlocks(const TransformRequest& from, const BlockConstants& constants)
      : request_(from),
        half_factor_(Float::all(constants.half_factor)),
        output_ceiling_(Float::all(constants.output_ceiling)),
        azimuth_scale_(Float::all(constants.azimuth_scale)),
        input_reciprocal_(Float::all(constants.input_reciprocal)),
        zero_difference_(Float::all(constants.zero_difference)),
        ceiling_words_(Words::all(static_cast<std::uint16_t>(from.output_max_int))) {}

  void evaluate(const BlockPosition& at) const {
    if constexpr (Simd::kPrefetch == Prefetch::next_row_pair_and_stores) prefetch_stores_ahead(at);
    if constexpr (Simd::kPrefetch != Prefetch::none) prefetch_next_row_pair(at);
    if constexpr (!kByColumns.outputs.empty()) {
      const ColumnSamples upper = load(at.upper_index);
      const ColumnSamples lower = load(at.lower_index);
      const ColumnSamples below = load(at.below_index);
      encode<kByColumns>(stokes_of(upper, lower),
                         Row{*this, at.upper_index, at.upper_pair_cursor, true});
      encode<kByColumns>(stokes_of(below, lower),
                         Row{*this, at.lower_index, at.lower_pair_cursor, at.lower_pairs_stay});
    }
    for_each_plane<kByWords>([&]<Plane plane>() { store_difference<plane>(at); });
  }

 private:
  using Float = typename Simd::Float;
  using Int = typename Simd::Int;
  using Words = typename Simd::Words;
  using ColumnSamples = Columns<RowSamples<Int>>;
  using ColumnStokes = Stokes<Columns<Float>>;

  /// An unscaled difference needs no float: it is a subtraction of 16-bit numbers that stops at 0.
  static constexpr bool is_plain_difference(Plane plane) {
    const PlaneSource source = traits_of(plane).source;
    return !axes.encoding.scaled && (source == PlaneSource::s1 || source == PlaneSource::s2);
  }

  static constexpr OutputSet outputs_that(bool are_plain_differences) {
    OutputSet outputs;
    for (const PlaneTraits& traits : kPlanes) {
      const bool wanted = axes.encoding.outputs.has(traits.plane);
      if (wanted && is_plain_difference(traits.plane) == are_plain_differences) {
        outputs.add(traits.plane);
      }
    }
    return outputs;
  }

  static constexpr EncodingAxes kByColumns{outputs_that(false), axes.encoding.scaled};
  static constexpr OutputSet kByWords = outputs_that(true);

  /// Where the pixels of one of the two rows go.
  struct Row {
    const WideBlocks& blocks;
    std::uint64_t index, pair_cursor;
    bool pairs_stay;

    void store_ratios(const ColumnStokes& stokes) const {
      if (!pairs_stay) return;
      const auto ratio = [&](Float difference, Float sum) {
        return (difference + blocks.zero_difference_) / sum;
      };
      Simd::store_pairs(blocks.request_.normalized_stokes + pair_cursor,
                        by_column(ratio, stokes.s1, stokes.s0),
                        by_column(ratio, stokes.s2, stokes.s0));
    }

    template <Plane plane>
    void store(const Columns<Float>& values) const {
      constexpr auto levels = kLevelPlanes[index_of(plane)];
      constexpr PlaneSource source = traits_of(plane).source;
      std::uint16_t* const to = blocks.request_.*levels + index;
      const Float ceiling = blocks.output_ceiling_;
      const auto bounded_above = [&](Float value) { return rounded(minimum(value, ceiling)); };
      if constexpr (source == PlaneSource::s1 || source == PlaneSource::s2) {
        Simd::store_from_0(to, by_column(bounded_above, values));
      } else if constexpr (source == PlaneSource::dolp) {
        // Where S0 = 0 the value is a NaN. As second operand of the minimum it stays one, and
        // rounding makes it 0x80000000, whose low half is the 0 that is stored.
        Simd::store_columns(
            to, by_column([&](Float value) { return rounded(minimum(ceiling, value)); }, values));
      } else {
        Simd::store_columns(to, by_column(bounded_above, values));  // None is below 0.
      }
    }

    Columns<Float> scaled(const Columns<Float>& values) const {
      return by_column(
          [&](Float value) {
            return scaled_by_reciprocal(value, blocks.output_ceiling_, blocks.input_reciprocal_);
          },
          values);
    }
    Columns<Float> azimuth(const Columns<Float>& s1, const Columns<Float>& s2) const {
      return by_column(
          [&](Float a, Float b) { return wide_azimuth_degrees(a, b) * blocks.azimuth_scale_; }, s1,
          s2);
    }
    Columns<Float> dolp(const ColumnStokes& stokes) const {
      return by_column(
          [&](Float s0, Float s1, Float s2) {
            return wide_dolp({s0, s1, s2}, blocks.output_ceiling_);
          },
          stokes.s0, stokes.s1, stokes.s2);
    }
  };

  /// In bytes.
  static constexpr std::uint64_t kPrefetchDistance = 512;

  void prefetch_stores_ahead(const BlockPosition& at) const {
    const auto prefetch = [](const auto* plane, std::uint64_t index, std::uint64_t bytes) {
      const char* const address = reinterpret_cast<const char*>(plane + index) + kPrefetchDistance;
      for (std::uint64_t offset = 0; offset < bytes; offset += 64) {
        prefetch_for_writing(address + offset);
      }
    };
    for_each_plane<axes.encoding.outputs>([&]<Plane plane>() {
      if constexpr (traits_of(plane).element == PlaneElement::level) {
        constexpr auto levels = kLevelPlanes[index_of(plane)];
        prefetch(request_.*levels, at.upper_index, kColumns * sizeof(std::uint16_t));
        prefetch(request_.*levels, at.lower_index, kColumns * sizeof(std::uint16_t));
      } else {
        prefetch(request_.normalized_stokes, at.upper_pair_cursor, 2 * kColumns * sizeof(float));
        if (at.lower_pairs_stay) {
          prefetch(request_.normalized_stokes, at.lower_pair_cursor, 2 * kColumns * sizeof(float));
        }
      }
    });
  }

  /// The columns at hand, in the rows that the next row pair is the first to touch.
  void prefetch_next_row_pair(const BlockPosition& at) const {
    const std::uint64_t two_rows = 2 * static_cast<std::uint64_t>(request_.width);
    const auto each_line = [](const std::uint16_t* row, auto prefetch) {
      for (std::uint64_t column = 0; column < kColumns; column += 64 / sizeof *row) {
        prefetch(reinterpret_cast<const char*>(row + column));
      }
    };
    each_line(request_.input + at.below_index + two_rows, prefetch_for_reading);
    // The lines of more planes would drive each other out of the nearest cache.
    if constexpr (std::popcount(axes.encoding.outputs.bits) <= 2) {
      for_each_plane<axes.encoding.outputs>([&]<Plane plane>() {
        if constexpr (traits_of(plane).element == PlaneElement::level) {
          constexpr auto levels = kLevelPlanes[index_of(plane)];
          each_line(request_.*levels + at.lower_index + two_rows, prefetch_for_writing);
        }
      });
    }
  }

  ColumnSamples load(std::uint64_t index) const {
    const auto [x0_x1, x2_x3] = Simd::load_pairs(request_.input + index);
    const Int x0 = low_half(x0_x1), x1 = high_half(x0_x1);
    const Int x2 = low_half(x2_x3), x3 = high_half(x2_x3);
    return {{x0, x1}, {x2, x1}, {x2, x3}};
  }

  /// Of one of the two rows: `outer` is the upper row for the upper pixels and the row below for
  /// the lower ones. Sums and differences are those of integers, and exact.
  ColumnStokes stokes_of(const ColumnSamples& outer, const ColumnSamples& lower) const {
    const auto s0 = [&](RowSamples<Int> o, RowSamples<Int> l) {
      return to_float((l.even + l.odd) + (o.even + o.odd)) * half_factor_;
    };
    const auto s1 = [](RowSamples<Int> o, RowSamples<Int> l) {
      return to_float(difference(s1_difference<axes.phase>(o, l)));
    };
    const auto s2 = [](RowSamples<Int> o, RowSamples<Int> l) {
      return to_float(difference(s2_difference<axes.phase>(o, l)));
    };
    return {by_column(s0, outer, lower), by_column(s1, outer, lower), by_column(s2, outer, lower)};
  }

  template <Plane plane>
  void store_difference(const BlockPosition& at) const {
    constexpr auto levels = kLevelPlanes[index_of(plane)];
    const auto store = [&](std::uint64_t index, RowSamples<Words> outer, RowSamples<Words> lower) {
      const auto operands = [&] {
        if constexpr (traits_of(plane).source == PlaneSource::s1) {
          return s1_difference<axes.phase>(outer, lower);
        } else {
          return s2_difference<axes.phase>(outer, lower);
        }
      }();
      Simd::store_words(
          request_.*levels + index,
          minimum(subtract_down_to_0(operands.minuend, operands.subtrahend), ceiling_words_));
    };
    for (std::uint64_t offset = 0; offset < kColumns; offset += kColumns / 2) {
      const RowSamples<Words> upper = load_words(at.upper_index + offset);
      const RowSamples<Words> lower = load_words(at.lower_index + offset);
      const RowSamples<Words> below = load_words(at.below_index + offset);
      store(at.upper_index + offset, upper, lower);
      store(at.lower_index + offset, below, lower);
    }
  }

  RowSamples<Words> load_words(std::uint64_t index) const {
    const Words words = Simd::load_words(request_.input + index);
    return {Simd::even_words(words), Simd::odd_words(words)};
  }

  // A copy: stores through vector types may alias anything but a local variable.
  const TransformRequest request_;
  const Float half_factor_, output_ceiling_, azimuth_scale_, input_reciprocal_, zero_difference_;
  const Words ceiling_words_;
};

/// At least one step of blocks, from left to right. What is left over behind the last whole step is
/// done by a step that overlaps it: it writes the same values again.
template <class Simd, BlockAxes axes>
void run_wide_steps(const TransformRequest& request, const BlockConstants& constants,
                    std::uint64_t count, BlockPosition position) {
  const WideBlocks<Simd, axes> blocks(request, constants);
  std::uint64_t steps = count / Simd::kBlocks;
  std::uint64_t left = count % Simd::kBlocks;
  for (;;) {
    do {
      blocks.evaluate(position);
      advance(position, Simd::kBlocks);
    } while (--steps != 0);
    if (left == 0) return;
    advance(position, left - Simd::kBlocks);  // Backwards: the indices wrap around.
    left = 0;
    steps = 1;
  }
}

}  // namespace kv
