// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "toolkit/api/maps/compensation.h"

#include "toolkit/api/maps/rescue.h"
#include "toolkit/api/maps/sample_loading.h"

namespace kv::polarization {
namespace {

/// Of the chunk's columns and the next one.
using MeanLine = std::array<float, kChunk + 1>;

/// Sums of three rows with the weights 1, 2, 1, of the columns from the one before the chunk to the
/// second one behind it. All of them are whole numbers below 2^20, which floats hold exactly.
using SumLine = std::array<float, kChunk + 3>;

void add_rows(const std::uint16_t* __restrict above, const std::uint16_t* __restrict here,
              const std::uint16_t* __restrict below, int count, float* __restrict sums) {
  for (int i = 0; i < count; ++i) {
    sums[i] = static_cast<float>(above[i] + 2 * here[i] + below[i]);
  }
}

void sum_rows(const FramePart& frame, int row, const CellChunk& chunk, SumLine& sums) {
  const auto start_of = [&frame](int index) {
    return frame.samples + pixel_count(frame.width, mirrored(index, frame.height));
  };
  const std::uint16_t* above = start_of(row - 1);
  const std::uint16_t* here = start_of(row);
  const std::uint16_t* below = start_of(row + 1);
  const int first = chunk.column - 1;
  const int last = chunk.column + chunk.count + 2;
  const auto add = [&](int column, int count, int place) {
    add_rows(above + column, here + column, below + column, count, sums.data() + place);
  };
  const int inner_first = first < 0 ? 0 : first;
  const int inner_last = last < frame.width ? last : frame.width;
  add(inner_first, inner_last - inner_first, inner_first - first);
  for (int column = first; column < inner_first; ++column) {
    add(mirrored(column, frame.width), 1, column - first);
  }
  for (int column = inner_last; column < last; ++column) {
    add(mirrored(column, frame.width), 1, column - first);
  }
}

void find_means(const FramePart& frame, int row, const CellChunk& chunk, float black_level,
                MeanLine& means) {
  SumLine sums;
  sum_rows(frame, row, chunk, sums);
  for (std::size_t i = 0; i <= static_cast<std::size_t>(chunk.count); ++i) {
    means[i] = (sums[i] + 2 * sums[i + 1] + sums[i + 2]) * (1.0f / 16) - black_level;
  }
}

void find_gains(const float* __restrict upper, const float* __restrict lower, int count,
                float least, std::array<Line, 4>& gains, std::uint8_t* __restrict flags) {
  float* __restrict own = gains[own_place].data();
  float* __restrict right = gains[right_place].data();
  float* __restrict below = gains[lower_place].data();
  float* __restrict diagonal = gains[diagonal_place].data();
  for (int i = 0; i < count; ++i) {
    const float top = upper[i] < upper[i + 1] ? upper[i] : upper[i + 1];
    const float bottom = lower[i] < lower[i + 1] ? lower[i] : lower[i + 1];
    const bool is_dark = (top < bottom ? top : bottom) < least;
    const float mean = ((upper[i] + upper[i + 1]) + (lower[i] + lower[i + 1])) * 0.25f;
    own[i] = is_dark ? 1 : mean / upper[i];
    right[i] = is_dark ? 1 : mean / upper[i + 1];
    below[i] = is_dark ? 1 : mean / lower[i];
    diagonal[i] = is_dark ? 1 : mean / lower[i + 1];
    flags[i] = static_cast<std::uint8_t>(flags[i] | (is_dark ? quality::not_compensated : 0));
  }
}

void multiply(const float* __restrict gains, int count, float* __restrict values,
              float* __restrict variances) {
  for (int i = 0; i < count; ++i) {
    values[i] *= gains[i];
    variances[i] *= gains[i] * gains[i];
  }
}

}  // namespace

void compensate(const FramePart& frame, const MapSettings& settings, CellChunk& chunk) {
  make_changeable(chunk);
  MeanLine upper;
  MeanLine lower;
  const float black_level = settings.samples.black_level;
  find_means(frame, chunk.row, chunk, black_level, upper);
  find_means(frame, mirrored(chunk.row + 1, frame.height), chunk, black_level, lower);
  find_gains(upper.data(), lower.data(), chunk.count, settings.compensation->least_mean,
             chunk.gains, chunk.flags.data());
  for (std::size_t place = 0; place < 4; ++place) {
    multiply(chunk.gains[place].data(), chunk.count, chunk.changed_values[place].data(),
             chunk.changed_variances[place].data());
  }
}

}  // namespace kv::polarization
