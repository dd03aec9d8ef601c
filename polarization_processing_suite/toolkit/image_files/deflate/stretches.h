// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace kv::polarization {

/// What deflate makes of bytes that are searched for nothing but runs of equal ones: literals, and
/// then a match with the byte before.
struct Stretch {
  std::uint32_t literals;
  std::uint32_t repeats;  ///< 0 at the end of a block, else kShortestMatch to kLongestMatch
};

constexpr std::uint32_t kShortestMatch = 3;
constexpr std::uint32_t kLongestMatch = 258;

/// Bytes of a block, at most.
constexpr std::size_t kMostOfBlock = std::size_t{1} << 17;

/// Cuts a block into stretches.
void find_stretches(std::span<const std::uint8_t> bytes, std::vector<Stretch>& stretches);

}  // namespace kv::polarization
