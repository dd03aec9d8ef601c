// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "kv/polarization/maps.h"
#include "toolkit/api/library_call.h"
#include "toolkit/api/maps/cell_chunk.h"

namespace kv::polarization {

/// Loads the samples of a chunk's pixels, and changes them as the settings ask.
class ChunkLoader {
 public:
  struct Needs {
    bool flags;
    bool variances;
  };

  ChunkLoader(const FramePart& frame, const Mosaic& mosaic, const MapSettings& settings,
              Needs needs);

  /// Fills everything up to `has_rescued`.
  void load(int row, int column, int count, CellChunk& chunk) const;

 private:
  struct Run {
    int row;
    int column;
    int count;
  };

  void load_line(int row, const CellChunk& chunk, SampleLine& line) const;
  void load_samples(const Run& run, int place, SampleLine& line) const;

  FramePart frame_;
  const MapSettings& settings_;
  std::size_t bad_start_;  // place of the frame's first pixel in the map of bad pixels
  int clip_level_;
  Needs needs_;
};

/// The row or column that takes the place of one beside the frame, which keeps its polarizers.
constexpr int mirrored(int index, int size) {
  const int positive = index < 0 ? -index : index;
  const int within = positive < size ? positive : 2 * (size - 1) - positive;
  return within < 0 ? -within : within;
}

}  // namespace kv::polarization
