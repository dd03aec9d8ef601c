#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "kv/calibration/calibration.h"
#include "kv/polarization/buffer.h"
#include "kv/polarization/frame.h"
#include "toolkit/calibration/correction/coefficient_blocks.h"

namespace kv::polarization {

/// A cell that its block does not hold.
struct SpecialCell {
  enum class Kind : std::uint8_t {
    outlier,      ///< coefficients beyond the block's range
    one_bad,      ///< `bad_place` has coefficients of 0
    not_solvable  ///< black levels alone
  };

  int column = 0;  ///< of cells
  Kind kind = Kind::outlier;
  std::size_t bad_place = 0;
  CellCoefficients coefficients{};
};

/// Place and size of the frames within the calibrated region.
struct FramePlace {
  int column;
  int row;
  int width;
  int height;
  CellAngles angles;  ///< of the frame's first cell
};

/// The row or column of a cell's second pixels: at an odd edge the ones before take the place.
constexpr int second_of_cell(int cell, int size) {
  return 2 * cell + 1 < size ? 2 * cell + 1 : size - 2;
}

/// What all cells of a frame are corrected with.
class CorrectionTable {
 public:
  CorrectionTable(const Calibration& calibration, const FramePlace& place, bool per_cell,
                  int threads);

  int rows() const { return rows_; }                                         ///< of cells
  int columns() const { return columns_; }                                   ///< of cells
  int blocks() const { return (columns_ + kBlockCells - 1) / kBlockCells; }  ///< in a row of cells

  const CoefficientScale& scale() const { return scale_; }
  const std::int16_t* block(int row, int index) const {
    return deviations_.data() + start_of_block(row, index);
  }

  /// Coefficients of a cell that is not special.
  CellCoefficients coefficients(int row, int column) const;

  /// From left to right.
  std::span<const SpecialCell> special_cells(int row) const {
    return special_[static_cast<std::size_t>(row)];
  }

  /// Greatest result of any cell but those of bad pixels, in raw counts.
  double greatest_result() const { return greatest_result_; }

 private:
  std::size_t start_of_block(int row, int index) const {
    if (!per_cell_) return 0;
    return kBlockSize * (pixel_count(blocks(), row) + static_cast<std::size_t>(index));
  }
  /// Returns whether the cell fits into a block; what does not is not stored.
  bool store(const CellCoefficients& coefficients, std::int16_t* block, std::size_t cell) const;

  int rows_;
  int columns_;
  bool per_cell_;
  CoefficientScale scale_;
  double greatest_result_ = 0;
  Buffer<std::int16_t> deviations_;  // of blocks; of a single one for all if not per cell
  std::vector<std::vector<SpecialCell>> special_;  // of each row of cells
};

}  // namespace kv::polarization
