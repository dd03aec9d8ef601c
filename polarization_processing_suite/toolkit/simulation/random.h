// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>

namespace kv::polarization {

/// The finalizer of splitmix64 (Steele, Lea and Flood, 2014): a random word for every counter. The
/// standard distributions would give other frames with other standard libraries.
std::uint64_t random_word(std::uint64_t counter);

/// A number of mean 0 and variance 1, close to normally distributed: the sum of eight uniform
/// 16-bit numbers, which is within 4.9 standard deviations.
double random_normal(std::uint64_t seed, std::uint64_t index);

/// A number from 0 up to 1, uniformly distributed.
double random_uniform(std::uint64_t seed, std::uint64_t index);

}  // namespace kv::polarization
