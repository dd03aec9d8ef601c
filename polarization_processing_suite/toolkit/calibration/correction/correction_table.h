// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "kv/polarization/buffer.h"
#include "kv/polarization/frame.h"
#include "toolkit/calibration/correction/cell_source.h"

namespace kv::polarization {

class WorkerPool;

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

  /// Coefficients of a cell that a block holds.
  CellCoefficients coefficients(int row, int column) const;

  /// Those that no block holds, from left to right: of bad pixels, and outliers.
  std::span<const CellRecord> special_cells(int row) const {
    return special_[static_cast<std::size_t>(row)];
  }

  /// Greatest result of any cell but those of bad pixels, in raw counts.
  double greatest_result() const { return greatest_result_; }

 private:
  std::size_t start_of_block(int row, int index) const {
    if (!per_cell_) return 0;
    return kBlockSize * (pixel_count(blocks(), row) + static_cast<std::size_t>(index));
  }
  void find_scale(const CellSource& source, WorkerPool& pool, double greatest_sample);
  void fill(const CellSource& source, WorkerPool& pool);

  /// Returns whether the cell fits into a block; what does not is not stored.
  bool store(const CellCoefficients& coefficients, std::int16_t* block, std::size_t cell) const;

  int rows_;
  int columns_;
  bool per_cell_;
  CoefficientScale scale_;
  double greatest_result_ = 0;
  Buffer<std::int16_t> deviations_;  // of blocks; of a single one for all if not per cell
  std::vector<std::vector<CellRecord>> special_;  // of each row of cells
};

}  // namespace kv::polarization
