// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "kv/polarization/buffer.h"
#include "toolkit/calibration/fit/tile_means.h"

namespace kv::polarization {

/// How a polarized frame counts in the sums of pixels: its samples as deviations from the mean of
/// their class, times the class's weight, times 1 and three combinations of the class means.
struct FrameTerms {
  ClassValues means{};                 ///< counts, black included
  ClassValues weights{};               ///< one over the variance, in units that keep sums small
  std::array<double, 4> regressors{};  ///< 1, and the frame's Stokes estimate over a scale
};

/// Sums of every pixel over the frames of a stack, in floats: they are sums of small deviations.
class PixelSums {
 public:
  static constexpr std::size_t kMoments = 4;

  /// Weighted sums of deviations times each regressor, and of squared deviations, over one
  /// half of the polarized frames.
  struct Half {
    std::array<Buffer<float>, kMoments> moments;
    Buffer<float> squares;
  };

  /// Of a sensor of that size; all sums are 0. Throws Fault of kind memory.
  PixelSums(int width, int height, const Mosaic& mosaic);

  /// Adds a frame, or takes it out again with a sign of -1.
  void add_polarized(const FramePart& frame, const FrameTerms& terms, std::size_t half,
                     int clip_level, double sign, WorkerPool& pool);
  void add_dark(const FramePart& frame, const ClassValues& reference, double sign,
                WorkerPool& pool);
  void add_flat(const FramePart& frame, const ClassValues& means, double sign, WorkerPool& pool);

  /// Adds the sums of other frames of the same sensor.
  void merge(const PixelSums& other, WorkerPool& pool);

  /// The sums in floats, in the order of their bytes: moments and squares of both halves, dark,
  /// squares of dark, flat.
  static constexpr std::size_t kFloats = 2 * (kMoments + 1) + 3;
  /// The greatest values they can have, whatever their sign, and of the counts of clipped().
  struct Limits {
    std::array<float, kFloats> floats{};
    int clipped = 0;
  };
  static constexpr std::size_t kBytesPerPixel = kFloats * sizeof(float) + 1;

  /// Memory of kBytesPerPixel a pixel, at any address. read() tells whether all values are within
  /// the limits.
  void write(std::byte* to, WorkerPool& pool) const;
  bool read(const std::byte* from, const Limits& limits, WorkerPool& pool);

  const Half& half(std::size_t index) const { return halves_[index]; }
  const Buffer<float>& dark() const { return dark_; }
  const Buffer<float>& dark_squares() const { return dark_squares_; }
  const Buffer<float>& flat() const { return flat_; }

  /// In how many frames each pixel was at the clip level, up to 255.
  const Buffer<std::uint8_t>& clipped() const { return clipped_; }

 private:
  template <class Work>
  void for_lines(const FramePart& frame, WorkerPool& pool, Work work) const;

  template <class Sums>
  static auto floats_of(Sums& sums) {
    auto& [even, odd] = sums.halves_;
    return std::array{&even.moments[0], &even.moments[1], &even.moments[2], &even.moments[3],
                      &even.squares,    &odd.moments[0],  &odd.moments[1],  &odd.moments[2],
                      &odd.moments[3],  &odd.squares,     &sums.dark_,      &sums.dark_squares_,
                      &sums.flat_};
  }

  std::array<std::size_t, 4> numbers_;  // of the classes
  std::array<Half, 2> halves_;
  Buffer<float> dark_;  // deviations from a reference
  Buffer<float> dark_squares_;
  Buffer<float> flat_;
  Buffer<std::uint8_t> clipped_;
};

}  // namespace kv::polarization
