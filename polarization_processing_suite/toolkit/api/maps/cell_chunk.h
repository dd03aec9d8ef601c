// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "toolkit/api/maps/propagation.h"

namespace kv::polarization {

/// Pixels of a row that are worked on at a time: even, so that columns keep their parity, and few
/// enough for all of it to stay in the first-level cache.
inline constexpr int kChunk = 256;

using Line = std::array<float, kChunk>;
using ByteLine = std::array<std::uint8_t, kChunk>;

/// Samples of one row of the frame, those of the chunk's columns and the next one, which is
/// mirrored at the frame's edge.
struct SampleLine {
  std::array<float, kChunk + 1> values;  ///< counts above black
  std::array<float, kChunk + 1> variances;
  std::array<std::uint8_t, kChunk + 1> flags;  ///< clipped and bad_pixel
};

/// Weights of a and b in S1 and S2 for the columns of a chunk.
struct RotationLines {
  Line s1_a, s1_b, s2_a, s2_b;
};

/// Pixels of a row on their way from samples to maps, each with the four samples of its 2x2
/// neighbourhood. Arrays are indexed by CellPlace.
struct CellChunk {
  int row;
  int column;
  int count;

  SampleLine upper;
  SampleLine lower;
  ByteLine flags;

  // Where the samples are: in the lines above, or in the lines below once they had to be changed.
  std::array<const float*, 4> values;
  std::array<const float*, 4> variances;
  std::array<Line, 4> changed_values;
  std::array<Line, 4> changed_variances;
  std::array<Line, 4> gains;  ///< of the compensation
  bool has_changed;
  bool has_rescued;

  // What is made of them, where it is to be: in the maps, so that writing to memory goes along with
  // computing, or in the lines below.
  float* s0;
  float* s1;
  float* s2;
  float* dolp;
  float* result;  ///< of a map that nothing else is made of
  std::array<Line, 4> unwanted;

  Line a, b;  ///< as in propagation.h
  Moments<Line> moments;
  VectorVariance<Line> variance;
};

}  // namespace kv::polarization
