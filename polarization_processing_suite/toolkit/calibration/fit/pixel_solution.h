// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <array>
#include <vector>

#include "kv/calibration/calibration.h"
#include "toolkit/api/worker_pool.h"
#include "toolkit/calibration/fit/class_normals.h"
#include "toolkit/calibration/fit/pixel_sums.h"

namespace kv::polarization {

/// One for each class.
using ClassNormals = std::array<ClassNormal, 4>;
ClassNormals class_normals(const ClassNormal::Source& source,
                           const std::vector<std::size_t>& frames);

PixelMoments both_halves(const PixelSums& sums, std::size_t pixel);
PixelMoments one_half(const PixelSums& sums, std::size_t half, std::size_t pixel);

/// The size of the frames and the class of each of their pixels.
struct PixelGrid {
  int width;
  int height;
  std::array<std::size_t, 4> numbers;

  std::size_t pixels() const { return pixel_count(width, height); }
  std::size_t class_at(int row, int column) const {
    return numbers[static_cast<std::size_t>(2 * (row % 2) + column % 2)];
  }
};

/// Calls work(pixel, class) for all pixels, bands of rows on several threads.
template <class Work>
void for_pixels(const PixelGrid& grid, WorkerPool& pool, const Work& work) {
  const int parts = std::min(pool.threads(), grid.height);
  pool.run(parts, [&](int part) {
    const int end = static_cast<int>(std::int64_t{grid.height} * (part + 1) / parts);
    for (int row = static_cast<int>(std::int64_t{grid.height} * part / parts); row < end; ++row) {
      const std::size_t start = pixel_count(grid.width, row);
      for (int column = 0; column < grid.width; ++column) {
        work(start + static_cast<std::size_t>(column), grid.class_at(row, column));
      }
    }
  });
}

/// The weights of 1, cos 2t and sin 2t of every pixel, and its weighted sum of squared residuals.
/// The three maps are those that gain, diattenuation and orientation are to be written to.
struct RawSolution {
  Buffer<float>* responses[3];
  Buffer<float> residuals;
};
void solve_pixels(const PixelGrid& grid, const PixelSums& sums, const Buffer<float>& black,
                  const ClassNormals& normals, WorkerPool& pool, RawSolution& solution);

/// Values of a class's pixels that are good so far, all or evenly chosen ones of many.
std::vector<float> class_values(const PixelGrid& grid, const Buffer<float>& values,
                                const Buffer<std::uint8_t>& bad, std::size_t number);

}  // namespace kv::polarization
