// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>

#include "toolkit/calibration/correction/cell_matrix.h"

namespace kv::polarization {

/// What a cell is corrected with: 4 black levels, then CellMatrix, 4 numbers each.
inline constexpr std::size_t kCoefficients = 16;
inline constexpr std::size_t kMean = 4;
inline constexpr std::size_t kFirst = 8;
inline constexpr std::size_t kSecond = 12;
using CellCoefficients = std::array<float, kCoefficients>;

/// Cells of a row that are corrected at a time.
inline constexpr int kBlockCells = 32;
inline constexpr int kBlockColumns = 2 * kBlockCells;

/// Those of 32 cells in 16 bits. Coefficients are deviations from common ones. All lie together in
/// the order of use, as memory is read fastest in one stream, and as four cells are a vector.
inline constexpr std::size_t kQuadSize = 4 * kCoefficients;
inline constexpr std::size_t kBlockSize = kCoefficients * kBlockCells;

/// Place of a cell's coefficient in its block: of four cells first the black levels of the upper
/// row, as the samples lie, then of the lower row, then likewise for each row of the matrix.
constexpr std::size_t index_in_block(std::size_t coefficient, std::size_t cell) {
  const std::size_t row = coefficient / 2;
  return cell / 4 * kQuadSize + row * 8 + cell % 4 * 2 + coefficient % 2;
}

/// Products of 16-bit numbers are added up in 32 bits. Samples of any bit depth therefore become
/// ones of 15 bits and a sign, deviations have 14 and a sign, and common coefficients, with their
/// 512th parts, must be below 32.
inline constexpr int kSampleBits = 15;
inline constexpr int kGreatestDeviation = 16383;
inline constexpr float kCommonSteps = 512;

struct CoefficientScale {
  int bit_depth;                                     ///< of the samples
  std::array<std::int16_t, kCoefficients> common{};  ///< 0 for black levels
  float step = 0;                                    ///< of deviations

  /// Of 15-bit counts in those of the frame; 1/2 for a frame of 16 bits, which is halved.
  float counts() const { return std::ldexp(1.0f, kSampleBits - bit_depth); }

  float decode(std::size_t coefficient, std::int16_t stored) const {
    if (coefficient < kMean) return (static_cast<float>(stored) + black_shift()) / counts();
    return static_cast<float>(common[coefficient]) / kCommonSteps +
           step * static_cast<float>(stored);
  }

  /// Nearest whole number to store; out of range where the cell does not fit into a block.
  float encode(std::size_t coefficient, float value) const {
    if (coefficient < kMean) return std::round(value * counts() - black_shift());
    return std::round((value - static_cast<float>(common[coefficient]) / kCommonSteps) / step);
  }

 private:
  /// Halving a sample drops a quarter on average.
  float black_shift() const { return bit_depth > kSampleBits ? 0.25f : 0; }
};

/// From results to the samples of a corrected frame.
struct OutputScale {
  float factor;    ///< corrected counts in a raw one
  float pedestal;  ///< corrected counts
};

/// Greatest sample of a cell that was corrected, and the one of all others.
inline constexpr std::uint16_t kGreatestCorrected = 65534;
inline constexpr std::uint16_t kSaturated = 65535;

/// Corrects the cells of a block: kBlockColumns samples of two rows. Returns whether one of them is
/// at the clip level, which is above 0, or beyond.
bool correct_block(const std::uint16_t* upper, const std::uint16_t* lower,
                   const std::int16_t* block, const CoefficientScale& scale,
                   const OutputScale& output, std::uint16_t clip_level,
                   std::uint16_t* corrected_upper, std::uint16_t* corrected_lower);

}  // namespace kv::polarization
