// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <iosfwd>

#include "frame.h"
#include "polarization_processor/records/coefficient_set.h"
#include "rounding_scope.h"

namespace kv::test {

/// A frame to try all kernels of its parities on, wholly determined by its seed.
struct RandomCase {
  std::uint32_t seed;
  Frame frame;
  std::array<CoefficientSet, 4> coefficients;
  RoundingMode rounding;
};

/// Seeds in a row visit all geometries in turn.
RandomCase random_case(std::uint32_t seed);

/// Height, width and the other choices, and how to run this case alone.
std::ostream& operator<<(std::ostream& out, const RandomCase& random_case);

/// From KV_TEST_SEED, else a new one each time.
std::uint32_t first_seed();

/// From KV_TEST_FRAMES, else so many that each geometry comes up KV_TEST_ROUNDS times, or five.
std::uint32_t frame_count();

}  // namespace kv::test
