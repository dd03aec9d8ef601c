// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "command_line/info/frame_facts.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdlib>
#include <limits>

namespace kv::polarization {
namespace {

struct PlaceSums {
  int least = std::numeric_limits<int>::max();
  int greatest = 0;
  std::uint64_t count = 0;
  std::uint64_t sum = 0;
  std::size_t at_full_scale = 0;

  void add(int sample, int full) {
    least = std::min(least, sample);
    greatest = std::max(greatest, sample);
    ++count;
    sum += static_cast<std::uint64_t>(sample);
    at_full_scale += sample >= full ? 1 : 0;
  }
};

struct DiagonalSums {
  double cells = 0;
  double differences = 0;
  double squares = 0;
  double all = 0;  // samples

  void add(int own, int other) {
    const double difference = own - other;
    ++cells;
    differences += difference;
    squares += difference * difference;
    all += own + other;
  }
};

DiagonalSums diagonal_sums(const Frame& frame, int full) {
  DiagonalSums sums;
  const auto width = static_cast<std::size_t>(frame.width);
  for (std::size_t row = 0; row + 1 < static_cast<std::size_t>(frame.height); row += 2) {
    const std::uint16_t* upper = frame.samples.data() + row * width;
    const std::uint16_t* lower = upper + width;
    for (std::size_t column = 0; column + 1 < width; column += 2) {
      const int own[] = {upper[column], lower[column + 1]};
      const int other[] = {upper[column + 1], lower[column]};
      if (std::max({own[0], own[1], other[0], other[1]}) >= full) continue;
      sums.add(own[0] + own[1], other[0] + other[1]);
    }
  }
  return sums;
}

}  // namespace

FrameFacts facts_of(const Frame& frame) {
  const int full = full_scale(frame.bit_depth);
  std::array<PlaceSums, 4> places;
  unsigned bits = 0;
  std::size_t index = 0;
  for (std::size_t row = 0; row < static_cast<std::size_t>(frame.height); ++row) {
    for (std::size_t column = 0; column < static_cast<std::size_t>(frame.width); ++column) {
      const std::uint16_t sample = frame.samples[index++];
      bits |= sample;
      places[row % 2 * 2 + column % 2].add(sample, full);
    }
  }
  FrameFacts facts;
  for (std::size_t i = 0; i < places.size(); ++i) {
    const PlaceSums& place = places[i];
    facts.places[i] = {place.least, place.greatest,
                       static_cast<double>(place.sum) / static_cast<double>(place.count),
                       place.at_full_scale};
    facts.greatest = std::max(facts.greatest, place.greatest);
    facts.at_full_scale += place.at_full_scale;
  }
  facts.above_full_scale = count_samples_above_full_scale(frame);
  facts.bits_used = static_cast<int>(std::bit_width(static_cast<unsigned>(facts.greatest)));
  facts.unused_low_bits = bits == 0 ? 0 : std::countr_zero(bits);
  const DiagonalSums sums = diagonal_sums(frame, full);
  const double s0 = sums.all / 2 / sums.cells;
  const double mean = sums.differences / sums.cells;
  facts.diagonal_difference = mean / s0;
  facts.diagonal_spread = std::sqrt(std::max(0.0, sums.squares / sums.cells - mean * mean)) / s0;
  return facts;
}

double roughness_of(const Frame& frame) {
  double differences = 0;
  double sum = 0;
  const auto width = static_cast<std::size_t>(frame.width);
  for (std::size_t row = 0; row + 2 < static_cast<std::size_t>(frame.height); ++row) {
    const std::uint16_t* samples = frame.samples.data() + row * width;
    for (std::size_t column = 0; column + 2 < width; ++column) {
      const int sample = samples[column];
      differences += std::abs(sample - samples[column + 2]);
      differences += std::abs(sample - samples[column + 2 * width]);
      sum += sample;
    }
  }
  return sum > 0 ? differences / sum : 0;
}

}  // namespace kv::polarization
