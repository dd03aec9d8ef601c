#pragma once

#include <cstdint>

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

/// Several blocks of the SSE4.1 form at a time: lane b of a vector stands for block b, and each of
/// a block's columns has a vector of its own. `Simd` gives the vector types of an instruction set:
///
///   kBlocks                     blocks, and so 32-bit lanes, at a time
///   Float, Int                  lanes; arithmetic as free functions and operators
///   Words                       16-bit elements in the order of memory, half of a row's samples
///   load_pairs(samples)         for each block its first two samples and its last two, a pair to
///                               a lane with the earlier sample in the low half
///   store_columns(plane, Columns<Int>)
///   store_pairs(pairs, Columns<Float> first, Columns<Float> second)
///   load_words, even_words, odd_words, store_words
///
/// It lives in an unnamed namespace of its file, and so does all that is made of it here.
template <class Simd, BlockAxes axes>
class WideBlocks {
 public:
  static constexpr std::uint64_t kColumns = Simd::kBlocks * kBlockColumns;

  WideBlocks(const TransformRequest& from, const BlockConstants& constants)
      : request(from),
        half_factor(Float::all(constants.half_factor)),
        output_ceiling(Float::all(constants.output_ceiling)),
        azimuth_scale(Float::all(constants.azimuth_scale)),
        input_reciprocal(Float::all(constants.input_reciprocal)),
        zero_difference(Float::all(constants.zero_difference)),
        ceiling_words(Words::all(static_cast<std::uint16_t>(from.output_max_int))) {}

  void evaluate(const BlockPosition& at) const {
    if constexpr (Simd::kPrefetchesForWriting) prefetch_planes(at);
    if constexpr (needs_columns) {
      const ColumnSamples upper = load(at.upper_index);
      const ColumnSamples lower = load(at.lower_index);
      const ColumnSamples below = load(at.below_index);
      evaluate_row(upper, lower, at.upper_index, at.upper_pair_cursor, true);
      evaluate_row(below, lower, at.lower_index, at.lower_pair_cursor, at.lower_pairs_stay);
    }
    if constexpr (has_plain_s1) {
      store_plain<axes.phase>(request.stokes_s1, at);
    }
    if constexpr (has_plain_s2) {
      store_plain<axes.phase ^ 1>(request.stokes_s2, at);
    }
  }

 private:
  using Float = typename Simd::Float;
  using Int = typename Simd::Int;
  using Words = typename Simd::Words;
  using ColumnSamples = Columns<RowSamples<Int>>;

  static constexpr OutputSet outputs = axes.encoding.outputs;
  static constexpr bool scaled = axes.encoding.scaled;
  // An unscaled difference needs no float: it is a subtraction of 16-bit numbers that stops at 0.
  static constexpr bool has_plain_s1 = outputs.stokes_s1 && !scaled;
  static constexpr bool has_plain_s2 = outputs.stokes_s2 && !scaled;
  static constexpr bool needs_columns = outputs.needs_s0() || outputs.azimuth || scaled;

  /// In bytes. Where a store's line is not at hand the store waits for it, unless the line is asked
  /// for early enough. Intel server processors gain; Zen 4 fetches ahead by itself.
  static constexpr std::uint64_t kPrefetchDistance = 512;

  void prefetch_planes(const BlockPosition& at) const {
    const auto prefetch = [](const auto* plane, std::uint64_t index, std::uint64_t bytes) {
      const char* const address = reinterpret_cast<const char*>(plane + index) + kPrefetchDistance;
      for (std::uint64_t offset = 0; offset < bytes; offset += 64) {
        prefetch_for_writing(address + offset);
      }
    };
    const auto prefetch_rows = [&](bool wanted, const std::uint16_t* plane) {
      if (!wanted) return;
      prefetch(plane, at.upper_index, kColumns * sizeof *plane);
      prefetch(plane, at.lower_index, kColumns * sizeof *plane);
    };
    prefetch_rows(outputs.intensity, request.intensity);
    prefetch_rows(outputs.stokes_s1, request.stokes_s1);
    prefetch_rows(outputs.stokes_s2, request.stokes_s2);
    prefetch_rows(outputs.azimuth, request.azimuth);
    prefetch_rows(outputs.dolp, request.dolp);
    if constexpr (outputs.normalized_stokes) {
      prefetch(request.normalized_stokes, at.upper_pair_cursor, 2 * kColumns * sizeof(float));
      if (at.lower_pairs_stay) {
        prefetch(request.normalized_stokes, at.lower_pair_cursor, 2 * kColumns * sizeof(float));
      }
    }
  }

  ColumnSamples load(std::uint64_t index) const {
    const auto [x0_x1, x2_x3] = Simd::load_pairs(request.input + index);
    const Int x0 = low_half(x0_x1), x1 = high_half(x0_x1);
    const Int x2 = low_half(x2_x3), x3 = high_half(x2_x3);
    return {{x0, x1}, {x2, x1}, {x2, x3}};
  }

  void evaluate_row(const ColumnSamples& outer, const ColumnSamples& lower, std::uint64_t index,
                    [[maybe_unused]] std::uint64_t pair_cursor,
                    [[maybe_unused]] bool pairs_stay) const {
    [[maybe_unused]] const auto s0 = by_column(
        [&](RowSamples<Int> o, RowSamples<Int> l) {
          return to_float((l.even + l.odd) + (o.even + o.odd)) * half_factor;
        },
        outer, lower);
    [[maybe_unused]] const auto s1 = differences<axes.phase>(outer, lower);
    [[maybe_unused]] const auto s2 = differences<axes.phase ^ 1>(outer, lower);

    if constexpr (outputs.normalized_stokes) {
      if (pairs_stay) {
        const auto ratio = [&](Float difference, Float sum) {
          return (difference + zero_difference) / sum;
        };
        Simd::store_pairs(request.normalized_stokes + pair_cursor, by_column(ratio, s1, s0),
                          by_column(ratio, s2, s0));
      }
    }
    if constexpr (outputs.intensity) {
      // S0 is not negative, so that the lower bound is met.
      store(request.intensity + index, s0,
            [&](Float value) { return minimum(in_output_units(value), output_ceiling); });
    }
    if constexpr (outputs.stokes_s1 && scaled) {
      store(request.stokes_s1 + index, s1,
            [&](Float value) { return clamp(in_output_units(value), output_ceiling); });
    }
    if constexpr (outputs.stokes_s2 && scaled) {
      store(request.stokes_s2 + index, s2,
            [&](Float value) { return clamp(in_output_units(value), output_ceiling); });
    }
    if constexpr (outputs.azimuth) {
      const auto azimuth = by_column(
          [&](Float a, Float b) { return wide_azimuth(a, b, azimuth_scale, output_ceiling); }, s1,
          s2);
      store(request.azimuth + index, azimuth, [](Float value) { return value; });
    }
    if constexpr (outputs.dolp) {
      const auto dolp = by_column(
          [&](Float sum, Float a, Float b) { return wide_dolp(sum, a, b, output_ceiling); }, s0, s1,
          s2);
      store(request.dolp + index, dolp, [](Float value) { return value; });
    }
  }

  template <std::uint32_t phase>
  static Columns<Float> differences(const ColumnSamples& outer, const ColumnSamples& lower) {
    return by_column(
        [](RowSamples<Int> o, RowSamples<Int> l) {
          const auto operands = s1_difference<phase>(o, l);
          return to_float(operands.minuend - operands.subtrahend);
        },
        outer, lower);
  }

  Float in_output_units(Float value) const {
    if constexpr (scaled) {
      return (value * output_ceiling) * input_reciprocal;
    } else {
      return value;
    }
  }

  template <class Bound>
  static void store(std::uint16_t* plane, const Columns<Float>& values, Bound bound) {
    Simd::store_columns(plane,
                        by_column([&](Float value) { return rounded(bound(value)); }, values));
  }

  template <std::uint32_t phase>
  void store_plain(std::uint16_t* plane, const BlockPosition& at) const {
    for (std::uint64_t offset = 0; offset < kColumns; offset += kColumns / 2) {
      const RowSamples<Words> upper = load_words(at.upper_index + offset);
      const RowSamples<Words> lower = load_words(at.lower_index + offset);
      const RowSamples<Words> below = load_words(at.below_index + offset);
      const auto bounded = [&](Difference<Words> operands) {
        return minimum(subtract_down_to_0(operands.minuend, operands.subtrahend), ceiling_words);
      };
      Simd::store_words(plane + at.upper_index + offset,
                        bounded(s1_difference<phase>(upper, lower)));
      Simd::store_words(plane + at.lower_index + offset,
                        bounded(s1_difference<phase>(below, lower)));
    }
  }

  RowSamples<Words> load_words(std::uint64_t index) const {
    const Words words = Simd::load_words(request.input + index);
    return {Simd::even_words(words), Simd::odd_words(words)};
  }

  // A copy: stores through vector types may alias anything but a local variable.
  const TransformRequest request;
  const Float half_factor, output_ceiling, azimuth_scale, input_reciprocal, zero_difference;
  const Words ceiling_words;
};

}  // namespace kv
