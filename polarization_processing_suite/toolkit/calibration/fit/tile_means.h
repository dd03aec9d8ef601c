// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "kv/polarization/mosaic.h"
#include "toolkit/api/library_call.h"
#include "toolkit/api/worker_pool.h"

namespace kv::polarization {

/// One number for each class of pixels: 0, 45, 90 and 135 degrees.
using ClassValues = std::array<double, 4>;

/// Number of the class of each place of a frame's first cell, 0 to 3 in steps of 45 degrees.
std::array<std::size_t, 4> class_numbers(const Mosaic& mosaic);

/// A frame in coarse steps, black level included: what is kept of every frame.
struct TileMeans {
  ClassValues classes{};           ///< means over the frame, counts
  std::vector<ClassValues> tiles;  ///< means, row by row, up to 16 x 16
  double clipped_share = 0;        ///< of the frame's pixels

  bool operator==(const TileMeans&) const = default;
};

/// Number of tiles of a frame of that size.
std::size_t tile_count(int width, int height);

/// Of a frame with even sides.
TileMeans tile_means(const FramePart& frame, int clip_level, WorkerPool& pool);

}  // namespace kv::polarization
