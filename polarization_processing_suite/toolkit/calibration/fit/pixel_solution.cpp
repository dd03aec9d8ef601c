// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "toolkit/calibration/fit/pixel_solution.h"

#include <algorithm>

namespace kv::polarization {

ClassNormals class_normals(const ClassNormal::Source& source,
                           const std::vector<std::size_t>& frames) {
  return {ClassNormal(source, frames, 0), ClassNormal(source, frames, 1),
          ClassNormal(source, frames, 2), ClassNormal(source, frames, 3)};
}

PixelMoments one_half(const PixelSums& sums, std::size_t half, std::size_t pixel) {
  const PixelSums::Half& from = sums.half(half);
  return {{from.moments[0][pixel], from.moments[1][pixel], from.moments[2][pixel],
           from.moments[3][pixel]},
          from.squares[pixel]};
}

PixelMoments both_halves(const PixelSums& sums, std::size_t pixel) {
  const PixelMoments even = one_half(sums, 0, pixel);
  const PixelMoments odd = one_half(sums, 1, pixel);
  return {even.moments + odd.moments, even.squares + odd.squares};
}

void solve_pixels(const PixelGrid& grid, const PixelSums& sums, const Buffer<float>& black,
                  const ClassNormals& normals, WorkerPool& pool, RawSolution& solution) {
  solution.residuals.resize(grid.pixels());
  for_pixels(grid, pool, [&](std::size_t pixel, std::size_t number) {
    const auto [response, residual] = normals[number].solve(both_halves(sums, pixel), black[pixel]);
    for (Eigen::Index i = 0; i < 3; ++i) {
      (*solution.responses[i])[pixel] = static_cast<float>(response[i]);
    }
    solution.residuals[pixel] = static_cast<float>(residual);
  });
}

std::vector<float> class_values(const PixelGrid& grid, const Buffer<float>& values,
                                const Buffer<std::uint8_t>& bad, std::size_t number) {
  // Enough for a median to 0.3 per cent of the deviation.
  constexpr std::size_t enough = 200'000;
  const int step = 1 + static_cast<int>(grid.pixels() / 4 / enough);
  const auto place = static_cast<int>(std::find(grid.numbers.begin(), grid.numbers.end(), number) -
                                      grid.numbers.begin());
  std::vector<float> chosen;
  for (int row = place / 2; row < grid.height; row += 2) {
    // Another start in each row, so that no column is left out.
    for (int column = place % 2 + 2 * (row / 2 % step); column < grid.width; column += 2 * step) {
      const std::size_t pixel = pixel_count(grid.width, row) + static_cast<std::size_t>(column);
      if (bad[pixel] == 0) chosen.push_back(values[pixel]);
    }
  }
  return chosen;
}

}  // namespace kv::polarization
