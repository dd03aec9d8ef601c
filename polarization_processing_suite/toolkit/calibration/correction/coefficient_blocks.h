#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "toolkit/calibration/correction/cell_matrix.h"

namespace kv::polarization {

/// Cells of a row that are corrected at a time.
inline constexpr int kBlockCells = 32;
inline constexpr int kBlockColumns = 2 * kBlockCells;

/// What a cell is corrected with: 4 black levels, then CellMatrix, 4 numbers each.
inline constexpr std::size_t kCoefficients = 16;
inline constexpr std::size_t kMean = 4;
inline constexpr std::size_t kFirst = 8;
inline constexpr std::size_t kSecond = 12;
using CellCoefficients = std::array<float, kCoefficients>;

/// A block holds those of neighbouring cells, each as its deviation from the cell of class means in
/// whole steps: of each coefficient in turn, kBlockCells. All lie together, as memory is read
/// fastest in one stream.
inline constexpr std::size_t kBlockSize = kCoefficients * kBlockCells;

/// From deviations to coefficients: step (deviation + mean). Means are whole numbers below 2^24, so
/// that the sum is exact.
struct CoefficientScale {
  std::array<float, kCoefficients> means;
  float black_step;
  float matrix_step;

  float step(std::size_t coefficient) const {
    return coefficient < kMean ? black_step : matrix_step;
  }
  float decode(std::size_t coefficient, std::int16_t deviation) const {
    return step(coefficient) * (static_cast<float>(deviation) + means[coefficient]);
  }
};

/// From results to the samples of a corrected frame.
struct OutputScale {
  float factor;    ///< corrected counts in a raw one
  float pedestal;  ///< corrected counts
};

/// Greatest sample of a cell that was corrected, and the one of all others.
inline constexpr std::uint16_t kGreatestCorrected = 65534;
inline constexpr std::uint16_t kSaturated = 65535;

/// Corrects the cells of a block: kBlockColumns samples of two rows.
void correct_block(const std::uint16_t* upper, const std::uint16_t* lower,
                   const std::int16_t* block, const CoefficientScale& scale,
                   const OutputScale& output, std::uint16_t* corrected_upper,
                   std::uint16_t* corrected_lower);

/// Whether any of a block's samples is at the level or above.
bool reaches(const std::uint16_t* samples, std::uint16_t level);

}  // namespace kv::polarization
