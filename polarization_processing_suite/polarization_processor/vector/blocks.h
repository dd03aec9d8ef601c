// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <array>
#include <bit>
#include <cstdint>

#include "polarization_processor/records/kernel_axes.h"
#include "polarization_processor/vector/block_constants.h"

namespace kv {

inline constexpr std::uint64_t kBlockColumns = 4;

/// Where a block reads and writes: 2 rows of 4 columns, computed from 3 rows.
struct BlockPosition {
  std::uint64_t upper_index;  ///< Element of the block's first column in the upper row,
  std::uint64_t lower_index;  ///< in the row below it,
  std::uint64_t below_index;  ///< and in the row that is only read.

  /// Float elements of normalized_stokes. They count blocks and nothing else, so that from the
  /// second row pair on the pairs of vector pixels do not stand at their pixels' places.
  std::uint64_t upper_pair_cursor;
  std::uint64_t lower_pair_cursor;

  /// Whether pairs of the lower row may stay in the plane. Upper rows of later row pairs overwrite
  /// all but those of the last two, so that the others need not be computed.
  bool lower_pairs_stay;
};

namespace {

inline void advance(BlockPosition& position, std::uint64_t blocks) {
  position.upper_index += kBlockColumns * blocks;
  position.lower_index += kBlockColumns * blocks;
  position.below_index += kBlockColumns * blocks;
  position.upper_pair_cursor += 2 * kBlockColumns * blocks;
  position.lower_pair_cursor += 2 * kBlockColumns * blocks;
}

}  // namespace

/// Runs `count` blocks, at least one, from left to right.
///
/// Blocks apply the default weights, whatever the instance's are, and take the approximate
/// reciprocal of 2 for the factor of S0.
using RunBlocks = void (*)(const TransformRequest& request, const BlockConstants& constants,
                           std::uint64_t count, BlockPosition position);

/// Blocks by encoding_index and phase.
using BlockEntries = std::array<std::array<RunBlocks, kPhaseCount>, kEncodingCount>;

/// Whether g++ is to put the instructions of the blocks into an order of its own (see
/// KV_SCHEDULING_OPTIONS in cmake/CompilerOptions.cmake). Azimuth and DoLP gain by it, in sets of
/// up to three planes; with more of them the stores get into each other's way, and planes of sums
/// and differences have no chains to overlap.
constexpr bool is_scheduled(const EncodingAxes& encoding) {
  const OutputSet& outputs = encoding.outputs;
  return (outputs.has(Plane::azimuth) || outputs.has(Plane::dolp)) &&
         std::popcount(outputs.bits) <= 3;
}

/// The blocks of a form.
struct BlockTable {
  const BlockEntries& scheduled;
  const BlockEntries& others;

  RunBlocks at(const EncodingAxes& encoding, std::uint32_t phase) const {
    const BlockEntries& entries = is_scheduled(encoding) ? scheduled : others;
    return entries[encoding_index(encoding)][phase];
  }
};

/// Each fourth column of the SSE4.1 form is a copy of its left neighbour; the SSE2 form gives it
/// its own value.
extern const BlockTable kSse2Blocks;
extern const BlockTable kSse41Blocks;

}  // namespace kv
