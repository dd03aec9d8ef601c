// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <immintrin.h>

#include <array>
#include <cstdint>
#include <cstring>

#include "polarization_processor/pixel/output_encoding.h"
#include "polarization_processor/vector/block_formulas.h"
#include "polarization_processor/vector/flatten.h"
#include "polarization_processor/vector/float4.h"
#include "polarization_processor/vector/weighted_frame.h"

// The four pixels of a mosaic cell at a time, in lanes TL, TR, BL, BR: lane by lane what
// pixel_function computes, to the same bits and with any weights.
namespace kv {
namespace {

/// Where a cell and the neighbours of its pixels lie: its upper row, the row below its two, its
/// first column, and the column to the right of its two.
struct CellPlace {
  std::uint64_t row, below_row;
  std::uint64_t column, right_column;
};

// At the bottom of a frame the cell's own upper row stands in for the row below, at its right edge
// the cell's first column for the one to the right: behind the same polarizers.
constexpr CellPlace inner_cell(std::uint64_t row, std::uint64_t column) {
  return {row, row + 2, column, column + 2};
}
constexpr CellPlace right_edge_cell(std::uint64_t row, std::uint64_t column) {
  return {row, row + 2, column, column};
}
constexpr CellPlace bottom_cell(std::uint64_t row, std::uint64_t column) {
  return {row, row, column, column + 2};
}
constexpr CellPlace corner_cell(std::uint64_t row, std::uint64_t column) {
  return {row, row, column, column};
}

inline Float4 cell_lanes(int tl, int tr, int bl, int br) {
  return {_mm_cvtepi32_ps(_mm_setr_epi32(tl, tr, bl, br))};
}

inline Neighbourhood<Float4> cell_samples(const InputDescriptor& input, const CellPlace& place) {
  const auto row_samples = [&](std::uint64_t row) {
    return std::array<int, 3>{input.at(row, place.column), input.at(row, place.column + 1),
                              input.at(row, place.right_column)};
  };
  const auto upper = row_samples(place.row);
  const auto lower = row_samples(place.row + 1);
  const auto below = row_samples(place.below_row);
  return {.own = cell_lanes(upper[0], upper[1], lower[0], lower[1]),
          .horizontal = cell_lanes(upper[1], upper[2], lower[1], lower[2]),
          .vertical = cell_lanes(lower[0], lower[1], below[0], below[1]),
          .diagonal = cell_lanes(lower[1], lower[2], below[1], below[2])};
}

inline Neighbourhood<Float4> cell_weights(const CellWeightRow& row) {
  const auto lanes = [&](std::size_t neighbour) {
    return Float4{_mm_load_ps(row.by_neighbour[neighbour].data())};
  };
  return {lanes(0), lanes(1), lanes(2), lanes(3)};
}

struct CellSink {
  const CellPlace& place;
  const TransformRequest& request;
  const PlaneFrame& planes;

  void store_ratios(const Stokes<Float4>& stokes) const {
    const Float4 first = stokes.s1 / stokes.s0;
    const Float4 second = stokes.s2 / stokes.s0;
    const std::uint64_t width = planes.input.width;
    float* const upper = request.normalized_stokes + (place.row * width + place.column) * 2;
    _mm_storeu_ps(upper, _mm_unpacklo_ps(first.lanes, second.lanes));
    _mm_storeu_ps(upper + 2 * width, _mm_unpackhi_ps(first.lanes, second.lanes));
  }

  template <Plane plane>
  void store(Float4 value) const {
    const __m128i words = rounded_words(clamp(value, Float4::all(request.output_max)));
    const int upper = _mm_cvtsi128_si32(words);
    const int lower = _mm_cvtsi128_si32(_mm_srli_si128(words, 4));
    const PlaneDescriptor& levels = planes.level_plane<plane>();
    std::memcpy(&levels.at(place.row, place.column), &upper, sizeof upper);
    std::memcpy(&levels.at(place.row + 1, place.column), &lower, sizeof lower);
  }

  Float4 scaled(Float4 value) const {
    return scaled_by_division(value, Float4::all(request.output_max),
                              Float4::all(request.input_max));
  }
  Float4 azimuth(Float4 s1, Float4 s2) const {
    return (azimuth_degrees(s1, s2) * Float4::all(request.output_max)) / Float4::all(kAzimuthRange);
  }
  Float4 dolp(const Stokes<Float4>& stokes) const {
    return dolp_value(stokes, Float4::all(request.output_max));
  }
};

template <EncodingAxes encoding>
KV_FLATTEN void evaluate_cell(const WeightedFrame& frame, const CellPlace& place) {
  constexpr StokesNeeds needs = needs_of(encoding.outputs);
  const Neighbourhood<Float4> samples = cell_samples(frame.planes.input, place);
  Stokes<Float4> stokes;
  const CellWeights& weights = frame.weights;
  if constexpr (needs.s0) {
    stokes.s0 = weighted_sum(cell_weights(weights.s0), samples) * Float4::all(kS0Factor);
  }
  if constexpr (needs.s1) stokes.s1 = weighted_sum(cell_weights(weights.s1), samples);
  if constexpr (needs.s2) stokes.s2 = weighted_sum(cell_weights(weights.s2), samples);
  encode<encoding>(stokes, CellSink{place, frame.request, frame.planes});
}

}  // namespace
}  // namespace kv
