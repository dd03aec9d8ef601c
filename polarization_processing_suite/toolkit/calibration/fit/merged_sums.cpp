// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstring>

#include "toolkit/calibration/fit/pixel_sums.h"

namespace kv::polarization {
namespace {

constexpr std::size_t kBlock = 16384;  // pixels whose sums of one kind stay in the caches

/// Calls work(first, count) for blocks of pixels, on several threads.
template <class Work>
void for_blocks(std::size_t pixels, WorkerPool& pool, const Work& work) {
  const std::size_t blocks = (pixels + kBlock - 1) / kBlock;
  const auto parts = static_cast<std::size_t>(pool.threads());
  pool.run(pool.threads(), [&](int part) {
    const std::size_t end = blocks * (static_cast<std::size_t>(part) + 1) / parts;
    for (std::size_t block = blocks * static_cast<std::size_t>(part) / parts; block < end;
         ++block) {
      work(block * kBlock, std::min(kBlock, pixels - block * kBlock));
    }
  });
}

void add(const float* __restrict from, std::size_t count, float* __restrict to) {
  for (std::size_t i = 0; i < count; ++i) to[i] += from[i];
}

/// Saturates, as counts of frames one by one do.
void add(const std::uint8_t* __restrict from, std::size_t count, std::uint8_t* __restrict to) {
  for (std::size_t i = 0; i < count; ++i) {
    to[i] = static_cast<std::uint8_t>(std::min(255, to[i] + from[i]));
  }
}

/// False for values that are no numbers, too.
template <class Number, class Limit>
bool are_within(const Number* values, std::size_t count, Limit limit) {
  std::uint32_t beyond = 0;
  for (std::size_t i = 0; i < count; ++i) {
    beyond |= std::abs(static_cast<Limit>(values[i])) <= limit ? 0 : 1;
  }
  return beyond == 0;
}

}  // namespace

void PixelSums::merge(const PixelSums& other, WorkerPool& pool) {
  const auto to = floats_of(*this);
  const auto from = floats_of(other);
  for_blocks(clipped_.size(), pool, [&](std::size_t first, std::size_t count) {
    for (std::size_t i = 0; i < kFloats; ++i) {
      add(from[i]->data() + first, count, to[i]->data() + first);
    }
    add(other.clipped_.data() + first, count, clipped_.data() + first);
  });
}

void PixelSums::write(std::byte* to, WorkerPool& pool) const {
  const std::size_t pixels = clipped_.size();
  const auto from = floats_of(*this);
  for_blocks(pixels, pool, [&](std::size_t first, std::size_t count) {
    for (std::size_t i = 0; i < kFloats; ++i) {
      std::memcpy(to + (i * pixels + first) * sizeof(float), from[i]->data() + first,
                  count * sizeof(float));
    }
    std::memcpy(to + kFloats * pixels * sizeof(float) + first, clipped_.data() + first, count);
  });
}

bool PixelSums::read(const std::byte* from, const Limits& limits, WorkerPool& pool) {
  const std::size_t pixels = clipped_.size();
  const auto to = floats_of(*this);
  std::atomic<bool> within = true;
  for_blocks(pixels, pool, [&](std::size_t first, std::size_t count) {
    for (std::size_t i = 0; i < kFloats; ++i) {
      float* sums = to[i]->data() + first;
      std::memcpy(sums, from + (i * pixels + first) * sizeof(float), count * sizeof(float));
      if (!are_within(sums, count, limits.floats[i])) within = false;
    }
    std::uint8_t* counts = clipped_.data() + first;
    std::memcpy(counts, from + kFloats * pixels * sizeof(float) + first, count);
    if (!are_within(counts, count, limits.clipped)) within = false;
  });
  return within;
}

}  // namespace kv::polarization
