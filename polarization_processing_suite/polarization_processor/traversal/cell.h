#pragma once

#include <immintrin.h>

#include <array>
#include <cstdint>
#include <cstring>

#include "polarization_processor/pixel/output_set.h"
#include "polarization_processor/pixel/stokes_estimate.h"
#include "polarization_processor/traversal/weighed_frame.h"
#include "polarization_processor/vector/block_formulas.h"
#include "polarization_processor/vector/float4.h"

// Four pixels of a mosaic cell at a time, lane by lane what pixel_function computes, to the same
// bits and with any weights. In an unnamed namespace for the reason told in float4.h.
namespace kv {
namespace {

/// Lanes: the cell positions TL, TR, BL, BR.
struct CellSamples {
  Float4 own, horizontal, vertical, diagonal;
};

inline Float4 weighted_sum(const CellWeightRow& row, const CellSamples& samples) {
  const auto weights = [&](std::size_t neighbour) {
    return Float4{_mm_load_ps(row.by_neighbour[neighbour].data())};
  };
  return ((weights(0) * samples.own + weights(1) * samples.horizontal) +
          weights(2) * samples.vertical) +
         weights(3) * samples.diagonal;
}

/// Where the samples of a cell lie: its two rows and the one that stands below them, its first
/// column and the one that stands to the right of its two. At the bottom of a frame the cell's
/// upper row takes the place of the row below, at the right its first column that of the next.
struct CellPlace {
  std::uint64_t upper_row, below_row;
  std::uint64_t column, right_column;
};

template <EncodingAxes encoding>
class Cells {
 public:
  explicit Cells(const WeighedFrame& frame) : frame_(frame) {}

  void operator()(const CellPlace& place) const {
    const CellSamples samples = samples_at(place);
    const std::uint64_t row = place.upper_row;
    const std::uint64_t column = place.column;
    const Float4 output_max = Float4::all(frame_.request.output_max);
    [[maybe_unused]] BlockStokes<Float4> stokes;
    if constexpr (outputs.needs_s0()) {
      stokes.s0 = weighted_sum(frame_.cell_weights.s0, samples) * Float4::all(kS0Factor);
    }
    if constexpr (outputs.needs_s1()) stokes.s1 = weighted_sum(frame_.cell_weights.s1, samples);
    if constexpr (outputs.needs_s2()) stokes.s2 = weighted_sum(frame_.cell_weights.s2, samples);

    if constexpr (outputs.normalized_stokes) {
      const Float4 first = stokes.s1 / stokes.s0;
      const Float4 second = stokes.s2 / stokes.s0;
      const std::uint64_t upper = (row * frame_.planes.input.width + column) * 2;
      float* const pairs = frame_.request.normalized_stokes;
      _mm_storeu_ps(pairs + upper, _mm_unpacklo_ps(first.lanes, second.lanes));
      _mm_storeu_ps(pairs + upper + 2 * frame_.planes.input.width,
                    _mm_unpackhi_ps(first.lanes, second.lanes));
    }
    if constexpr (outputs.intensity) {
      store(frame_.planes.intensity, row, column, in_output_units(stokes.s0));
    }
    if constexpr (outputs.stokes_s1) {
      store(frame_.planes.stokes_s1, row, column, in_output_units(stokes.s1));
    }
    if constexpr (outputs.stokes_s2) {
      store(frame_.planes.stokes_s2, row, column, in_output_units(stokes.s2));
    }
    if constexpr (outputs.azimuth) {
      const Float4 degrees = stokes_angle(stokes.s1, stokes.s2) * Float4::all(kDegreesOfAzimuth) +
                             Float4::all(kAzimuthOffset);
      store(frame_.planes.azimuth, row, column,
            (degrees * output_max) / Float4::all(kAzimuthRange));
    }
    if constexpr (outputs.dolp) {
      store(frame_.planes.dolp, row, column, dolp_value(stokes, output_max));
    }
  }

 private:
  static constexpr OutputSet outputs = encoding.outputs;

  CellSamples samples_at(const CellPlace& place) const {
    const auto sample = [&](std::uint64_t row, std::uint64_t column) {
      return static_cast<int>(frame_.planes.input.at(row, column));
    };
    const auto row_samples = [&](std::uint64_t row) {
      return std::array<int, 3>{sample(row, place.column), sample(row, place.column + 1),
                                sample(row, place.right_column)};
    };
    const auto upper = row_samples(place.upper_row);
    const auto lower = row_samples(place.upper_row + 1);
    const auto below = row_samples(place.below_row);
    return {lanes(upper[0], upper[1], lower[0], lower[1]),
            lanes(upper[1], upper[2], lower[1], lower[2]),
            lanes(lower[0], lower[1], below[0], below[1]),
            lanes(lower[1], lower[2], below[1], below[2])};
  }

  static Float4 lanes(int tl, int tr, int bl, int br) {
    return {_mm_cvtepi32_ps(_mm_setr_epi32(tl, tr, bl, br))};
  }

  Float4 in_output_units(Float4 value) const {
    if constexpr (encoding.scaled) {
      return (value * Float4::all(frame_.request.output_max)) /
             Float4::all(frame_.request.input_max);
    } else {
      return value;
    }
  }

  void store(const PlaneDescriptor& plane, std::uint64_t row, std::uint64_t column,
             Float4 value) const {
    const Float4 bounded = clamp(value, Float4::all(frame_.request.output_max));
    const __m128i words = rounded_words(bounded);
    const int upper = _mm_cvtsi128_si32(words);
    const int lower = _mm_cvtsi128_si32(_mm_srli_si128(words, 4));
    std::memcpy(&plane.at(row, column), &upper, sizeof upper);
    std::memcpy(&plane.at(row + 1, column), &lower, sizeof lower);
  }

  const WeighedFrame& frame_;
};

}  // namespace
}  // namespace kv
