// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "toolkit/calibration/fit/pixel_sums.h"

#include <algorithm>

#include "kv/polarization/frame.h"

namespace kv::polarization {
namespace {

constexpr std::size_t kBlock = 256;  // columns; even, so that its classes are those of any other

/// The constants of a block's pixels, column by column, so that the loops need no stride.
struct BlockTerms {
  using Line = std::array<float, kBlock>;
  Line means;
  std::array<Line, PixelSums::kMoments> factors;
};

void add_moments(const std::uint16_t* __restrict samples, std::size_t count,
                 const BlockTerms& terms, float* __restrict m0, float* __restrict m1,
                 float* __restrict m2, float* __restrict m3, float* __restrict squares) {
  const auto& [f0, f1, f2, f3] = terms.factors;
  for (std::size_t i = 0; i < count; ++i) {
    const float deviation = static_cast<float>(samples[i]) - terms.means[i];
    m0[i] += f0[i] * deviation;
    m1[i] += f1[i] * deviation;
    m2[i] += f2[i] * deviation;
    m3[i] += f3[i] * deviation;
    squares[i] += f0[i] * deviation * deviation;
  }
}

/// Saturates: a pixel that often at the clip level is bad whichever frames are taken out.
void count_clipped(const std::uint16_t* __restrict samples, std::size_t count, int clip_level,
                   bool take_out, std::uint8_t* __restrict counts) {
  for (std::size_t i = 0; i < count; ++i) {
    if (samples[i] < clip_level || counts[i] == 255) continue;
    counts[i] = static_cast<std::uint8_t>(take_out ? counts[i] - 1 : counts[i] + 1);
  }
}

void add_deviations(const std::uint16_t* __restrict samples, std::size_t count,
                    std::array<float, 2> means, float sign, float* __restrict sums) {
  for (std::size_t i = 0; i < count; ++i) {
    sums[i] += sign * (static_cast<float>(samples[i]) - means[i % 2]);
  }
}

void add_squares(const std::uint16_t* __restrict samples, std::size_t count,
                 std::array<float, 2> means, float sign, float* __restrict sums) {
  for (std::size_t i = 0; i < count; ++i) {
    const float deviation = static_cast<float>(samples[i]) - means[i % 2];
    sums[i] += sign * deviation * deviation;
  }
}

}  // namespace

PixelSums::PixelSums(int width, int height, const Mosaic& mosaic)
    : numbers_(class_numbers(mosaic)) {
  const std::size_t pixels = pixel_count(width, height);
  const auto clear = [pixels](auto& sums) {
    sums.resize(pixels);
    std::fill(sums.begin(), sums.end(), std::uint8_t{0});
  };
  for (Half& half : halves_) {
    for (Buffer<float>& moment : half.moments) clear(moment);
    clear(half.squares);
  }
  clear(dark_);
  clear(dark_squares_);
  clear(flat_);
  clear(clipped_);
}

/// Calls work(start, row): the place of a row's first pixel, on several threads.
template <class Work>
void PixelSums::for_lines(const FramePart& frame, WorkerPool& pool, Work work) const {
  const int parts = std::min(pool.threads(), frame.height);
  pool.run(parts, [&](int part) {
    const int end = static_cast<int>(std::int64_t{frame.height} * (part + 1) / parts);
    for (int row = static_cast<int>(std::int64_t{frame.height} * part / parts); row < end; ++row) {
      work(pixel_count(frame.width, row), static_cast<std::size_t>(row));
    }
  });
}

void PixelSums::add_polarized(const FramePart& frame, const FrameTerms& terms, std::size_t half,
                              int clip_level, double sign, WorkerPool& pool) {
  std::array<BlockTerms, 2> parities;  // of rows
  for (std::size_t parity = 0; parity < 2; ++parity) {
    for (std::size_t column = 0; column < kBlock; ++column) {
      const std::size_t number = numbers_[2 * parity + column % 2];
      parities[parity].means[column] = static_cast<float>(terms.means[number]);
      for (std::size_t moment = 0; moment < kMoments; ++moment) {
        parities[parity].factors[moment][column] =
            static_cast<float>(sign * terms.weights[number] * terms.regressors[moment]);
      }
    }
  }
  Half& sums = halves_[half];
  const auto width = static_cast<std::size_t>(frame.width);
  for_lines(frame, pool, [&](std::size_t start, std::size_t row) {
    for (std::size_t column = 0; column < width; column += kBlock) {
      const std::size_t place = start + column;
      const std::size_t count = std::min(kBlock, width - column);
      add_moments(frame.samples + place, count, parities[row % 2], sums.moments[0].data() + place,
                  sums.moments[1].data() + place, sums.moments[2].data() + place,
                  sums.moments[3].data() + place, sums.squares.data() + place);
    }
    count_clipped(frame.samples + start, width, clip_level, sign < 0, clipped_.data() + start);
  });
}

void PixelSums::add_dark(const FramePart& frame, const ClassValues& reference, double sign,
                         WorkerPool& pool) {
  const auto width = static_cast<std::size_t>(frame.width);
  for_lines(frame, pool, [&](std::size_t start, std::size_t row) {
    const std::array means{static_cast<float>(reference[numbers_[2 * (row % 2)]]),
                           static_cast<float>(reference[numbers_[2 * (row % 2) + 1]])};
    add_deviations(frame.samples + start, width, means, static_cast<float>(sign),
                   dark_.data() + start);
    add_squares(frame.samples + start, width, means, static_cast<float>(sign),
                dark_squares_.data() + start);
  });
}

void PixelSums::add_flat(const FramePart& frame, const ClassValues& class_means, double sign,
                         WorkerPool& pool) {
  const auto width = static_cast<std::size_t>(frame.width);
  for_lines(frame, pool, [&](std::size_t start, std::size_t row) {
    const std::array means{static_cast<float>(class_means[numbers_[2 * (row % 2)]]),
                           static_cast<float>(class_means[numbers_[2 * (row % 2) + 1]])};
    add_deviations(frame.samples + start, width, means, static_cast<float>(sign),
                   flat_.data() + start);
  });
}

}  // namespace kv::polarization
