// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>

#include "kv/calibration/calibration.h"
#include "toolkit/calibration/correction/coefficient_blocks.h"

namespace kv::polarization {

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

/// What a cell of a frame is corrected with.
struct CellRecord {
  enum class Kind : std::uint8_t {
    all_good,
    one_bad,      ///< `bad_place` has coefficients of 0
    not_solvable  ///< black levels alone
  };

  int column = 0;  ///< of cells
  Kind kind = Kind::all_good;
  std::size_t bad_place = 0;
  CellCoefficients coefficients{};
};

/// Cells of frames of one place, solved from a calibration.
class CellSource {
 public:
  /// Keeps references to both. Takes each good pixel as it is, or if not per cell, as the mean of
  /// its class.
  CellSource(const Calibration& calibration, const FramePlace& place, bool per_cell)
      : calibration_(calibration), place_(place), per_cell_(per_cell) {}

  CellRecord at(int row, int column) const;
  CellCoefficients of_class_means() const;

 private:
  PixelModel class_model(std::size_t place) const;
  PixelModel pixel_model(std::size_t pixel) const;

  const Calibration& calibration_;
  const FramePlace& place_;
  bool per_cell_;
};

}  // namespace kv::polarization
