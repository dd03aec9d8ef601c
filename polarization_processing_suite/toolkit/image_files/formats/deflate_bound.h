// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>

namespace kv::polarization {

/// Deflate makes a run of at most 258 bytes of two codes, which take a bit each or more.
constexpr std::uint64_t kDeflateRatio = 1032;

/// No more bytes than that come out of that many deflated ones.
constexpr std::uint64_t most_inflated(std::uint64_t bytes) {
  return bytes > UINT64_MAX / kDeflateRatio ? UINT64_MAX : bytes * kDeflateRatio;
}

}  // namespace kv::polarization
