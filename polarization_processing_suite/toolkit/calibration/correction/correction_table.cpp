// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "toolkit/calibration/correction/correction_table.h"

#include <algorithm>
#include <cmath>

#include "toolkit/api/worker_pool.h"

namespace kv::polarization {
namespace {

/// The greatest of the four results from samples anywhere between 0 and `greatest`.
double greatest_of(const CellCoefficients& cell, double greatest) {
  double most = 0;
  for (const std::size_t row : {kFirst, kSecond}) {
    for (const float sign : {1.0f, -1.0f}) {
      double sum = 0;
      for (std::size_t place = 0; place < 4; ++place) {
        const double factor = cell[kMean + place] + sign * cell[row + place];
        sum += std::max(-factor * cell[place], factor * (greatest - cell[place]));
      }
      most = std::max(most, sum);
    }
  }
  return most;
}

/// How far the matrices of cells lie from the common one.
struct Spread {
  double greatest = 0;
  double squares = 0;
  double count = 0;

  void add(double deviation) {
    greatest = std::max(greatest, std::abs(deviation));
    squares += deviation * deviation;
    ++count;
  }
  void add(const Spread& other) {
    greatest = std::max(greatest, other.greatest);
    squares += other.squares;
    count += other.count;
  }

  /// Few cells are further out than 8 standard deviations; they would take resolution from all
  /// others.
  float step() const {
    constexpr double least_range = 0.5 / kCommonSteps;  // of rounding the common coefficients
    const double range = std::min(greatest, 8 * std::sqrt(squares / std::max(count, 1.0)));
    return static_cast<float>(std::max(range, least_range) / kGreatestDeviation);
  }
};

/// What a row of cells tells of the scale.
struct RowExtent {
  Spread spread;
  double greatest_result = 0;
};

/// Calls work(row) for each of a table's rows, in bands.
template <class Work>
void for_rows(WorkerPool& pool, int rows, const Work& work) {
  const int bands = std::min(pool.threads(), rows);
  const auto boundary = [&](int band) {
    return static_cast<int>(std::int64_t{rows} * band / bands);
  };
  pool.run(bands, [&](int band) {
    for (int row = boundary(band); row < boundary(band + 1); ++row) work(row);
  });
}

}  // namespace

CorrectionTable::CorrectionTable(const Calibration& calibration, const FramePlace& place,
                                 bool per_cell, int threads)
    : rows_((place.height + 1) / 2),
      columns_((place.width + 1) / 2),
      per_cell_(per_cell),
      scale_{.bit_depth = calibration.bit_depth},
      special_(static_cast<std::size_t>(rows_)) {
  const CellSource source(calibration, place, per_cell);
  WorkerPool pool(WorkerPool::threads_of(threads));
  find_scale(source, pool,
             std::min<int>(calibration.clip_level, full_scale(calibration.bit_depth)));
  fill(source, pool);
}

void CorrectionTable::find_scale(const CellSource& source, WorkerPool& pool,
                                 double greatest_sample) {
  const CellCoefficients means = source.of_class_means();
  for (std::size_t i = kMean; i < kCoefficients; ++i) {
    scale_.common[i] = static_cast<std::int16_t>(std::lround(means[i] * kCommonSteps));
  }
  // Row by row, so that sums are the same on any number of threads.
  std::vector<RowExtent> extents(static_cast<std::size_t>(rows_));
  for_rows(pool, rows_, [&](int row) {
    RowExtent extent;
    for (int column = 0; column < columns_; ++column) {
      const CellRecord cell = source.at(row, column);
      if (cell.kind != CellRecord::Kind::all_good) continue;
      extent.greatest_result =
          std::max(extent.greatest_result, greatest_of(cell.coefficients, greatest_sample));
      for (std::size_t i = kMean; i < kCoefficients; ++i) {
        extent.spread.add(cell.coefficients[i] -
                          static_cast<float>(scale_.common[i]) / kCommonSteps);
      }
    }
    extents[static_cast<std::size_t>(row)] = extent;
  });
  Spread spread;
  for (const RowExtent& extent : extents) {
    spread.add(extent.spread);
    greatest_result_ = std::max(greatest_result_, extent.greatest_result);
  }
  scale_.step = spread.step();
}

void CorrectionTable::fill(const CellSource& source, WorkerPool& pool) {
  deviations_.resize(per_cell_ ? kBlockSize * pixel_count(blocks(), rows_) : kBlockSize);
  std::fill(deviations_.begin(), deviations_.end(), std::int16_t{0});
  if (!per_cell_) {
    const CellCoefficients means = source.of_class_means();
    for (std::size_t cell = 0; cell < kBlockCells; ++cell) store(means, deviations_.data(), cell);
  }
  for_rows(pool, rows_, [&](int row) {
    for (int column = 0; column < columns_; ++column) {
      const CellRecord cell = source.at(row, column);
      if (cell.kind == CellRecord::Kind::all_good) {
        std::int16_t* block = deviations_.data() + start_of_block(row, column / kBlockCells);
        const auto place = static_cast<std::size_t>(column % kBlockCells);
        if (!per_cell_ || store(cell.coefficients, block, place)) continue;
      }
      special_[static_cast<std::size_t>(row)].push_back(cell);
    }
  });
}

bool CorrectionTable::store(const CellCoefficients& coefficients, std::int16_t* block,
                            std::size_t cell) const {
  std::array<float, kCoefficients> encoded;
  for (std::size_t i = 0; i < kCoefficients; ++i) {
    encoded[i] = scale_.encode(i, coefficients[i]);
    constexpr float greatest_black = 32767;
    if (std::abs(encoded[i]) > (i < kMean ? greatest_black : kGreatestDeviation)) return false;
  }
  for (std::size_t i = 0; i < kCoefficients; ++i) {
    block[index_in_block(i, cell)] = static_cast<std::int16_t>(encoded[i]);
  }
  return true;
}

CellCoefficients CorrectionTable::coefficients(int row, int column) const {
  const std::int16_t* stored = block(row, column / kBlockCells);
  CellCoefficients cell;
  for (std::size_t i = 0; i < kCoefficients; ++i) {
    cell[i] =
        scale_.decode(i, stored[index_in_block(i, static_cast<std::size_t>(column % kBlockCells))]);
  }
  return cell;
}

}  // namespace kv::polarization
