#include "toolkit/calibration/correction/correction_table.h"

#include <algorithm>
#include <cmath>

#include "toolkit/api/worker_pool.h"

namespace kv::polarization {
namespace {

std::size_t class_of(int angle) { return static_cast<std::size_t>(angle / 45); }

CellCoefficients coefficients_of(const CellOf<PixelModel>& pixels,
                                 const CellMatrix<double>& matrix) {
  CellCoefficients all;
  for (std::size_t place = 0; place < 4; ++place) {
    all[place] = static_cast<float>(pixels[place].black);
    all[kMean + place] = static_cast<float>(matrix.mean[place]);
    all[kFirst + place] = static_cast<float>(matrix.first[place]);
    all[kSecond + place] = static_cast<float>(matrix.second[place]);
  }
  return all;
}

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

/// Cells from the calibration, as a table wants them.
class CellSource {
 public:
  CellSource(const Calibration& calibration, const FramePlace& place, bool per_cell)
      : calibration_(calibration), place_(place), per_cell_(per_cell) {}

  SpecialCell at(int row, int column) const {
    CellOf<PixelModel> pixels;
    std::size_t bad_pixels = 0;
    SpecialCell cell;
    cell.column = column;
    for (std::size_t place = 0; place < 4; ++place) {
      const int y = place < 2 ? 2 * row : second_of_cell(row, place_.height);
      const int x = place % 2 == 0 ? 2 * column : second_of_cell(column, place_.width);
      const std::size_t pixel = pixel_count(calibration_.width, place_.row + y) +
                                static_cast<std::size_t>(place_.column + x);
      pixels[place] = per_cell_ ? pixel_model(pixel) : class_model(place);
      if (calibration_.maps.bad[pixel] == 0) continue;
      ++bad_pixels;
      cell.bad_place = place;
      pixels[place] = class_model(place);
    }
    const auto matrix = bad_pixels == 0   ? solve(pixels, place_.angles)
                        : bad_pixels == 1 ? solve_without(cell.bad_place, pixels, place_.angles)
                                          : std::nullopt;
    cell.kind = !matrix           ? SpecialCell::Kind::not_solvable
                : bad_pixels == 1 ? SpecialCell::Kind::one_bad
                                  : SpecialCell::Kind::outlier;
    cell.coefficients = coefficients_of(pixels, matrix.value_or(CellMatrix<double>{}));
    return cell;
  }

  CellCoefficients of_class_means() const {
    CellOf<PixelModel> pixels;
    for (std::size_t place = 0; place < 4; ++place) pixels[place] = class_model(place);
    return coefficients_of(pixels, solve(pixels, place_.angles).value_or(CellMatrix<double>{}));
  }

 private:
  PixelModel class_model(std::size_t place) const {
    const PixelClass& all = calibration_.classes[class_of(place_.angles[place])];
    return {all.black.value, all.gain.value, all.diattenuation.value,
            all.orientation.value - place_.angles[place]};
  }
  PixelModel pixel_model(std::size_t pixel) const {
    const PixelMaps& maps = calibration_.maps;
    return {maps.black[pixel], maps.gain[pixel], maps.diattenuation[pixel],
            maps.orientation[pixel]};
  }

  const Calibration& calibration_;
  const FramePlace& place_;
  bool per_cell_;
};

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
    constexpr double kLeastRange = 0.5 / kCommonSteps;  // of rounding the common coefficients
    const double range = std::min(greatest, 8 * std::sqrt(squares / std::max(count, 1.0)));
    return static_cast<float>(std::max(range, kLeastRange) / kGreatestDeviation);
  }
};

/// What a band of rows of a table tells of its scale.
struct Found {
  Spread spread;
  double greatest_result = 0;
};

}  // namespace

CorrectionTable::CorrectionTable(const Calibration& calibration, const FramePlace& place,
                                 bool per_cell, int threads)
    : rows_((place.height + 1) / 2),
      columns_((place.width + 1) / 2),
      per_cell_(per_cell),
      scale_{.bit_depth = calibration.bit_depth},
      special_(static_cast<std::size_t>(rows_)) {
  const CellSource source(calibration, place, per_cell);
  const CellCoefficients means = source.of_class_means();
  for (std::size_t i = kMean; i < kCoefficients; ++i) {
    scale_.common[i] = static_cast<std::int16_t>(std::lround(means[i] * kCommonSteps));
  }
  WorkerPool pool(std::min(WorkerPool::threads_of(threads), rows_));
  const auto for_cells = [&](const auto& work) {
    pool.run(pool.threads(), [&](int band) {
      const auto boundary = [&](int index) {
        return static_cast<int>(std::int64_t{rows_} * index / pool.threads());
      };
      for (int row = boundary(band); row < boundary(band + 1); ++row) {
        for (int column = 0; column < columns_; ++column) work(band, row, source.at(row, column));
      }
    });
  };

  const double greatest_sample =
      std::min<int>(calibration.clip_level, full_scale(calibration.bit_depth));
  std::vector<Found> found(static_cast<std::size_t>(pool.threads()));
  for_cells([&](int band, int, const SpecialCell& cell) {
    if (cell.kind != SpecialCell::Kind::outlier) return;
    Found& of_band = found[static_cast<std::size_t>(band)];
    of_band.greatest_result =
        std::max(of_band.greatest_result, greatest_of(cell.coefficients, greatest_sample));
    for (std::size_t i = kMean; i < kCoefficients; ++i) {
      of_band.spread.add(cell.coefficients[i] -
                         static_cast<float>(scale_.common[i]) / kCommonSteps);
    }
  });
  Spread spread;
  for (const Found& of_band : found) {
    spread.add(of_band.spread);
    greatest_result_ = std::max(greatest_result_, of_band.greatest_result);
  }
  scale_.step = spread.step();

  deviations_.resize(per_cell ? kBlockSize * pixel_count(blocks(), rows_) : kBlockSize);
  std::fill(deviations_.begin(), deviations_.end(), std::int16_t{0});
  if (!per_cell) {
    for (std::size_t cell = 0; cell < kBlockCells; ++cell) store(means, deviations_.data(), cell);
  }
  for_cells([&](int, int row, const SpecialCell& cell) {
    if (cell.kind == SpecialCell::Kind::outlier) {
      std::int16_t* block = deviations_.data() + start_of_block(row, cell.column / kBlockCells);
      const auto cell_place = static_cast<std::size_t>(cell.column % kBlockCells);
      if (!per_cell_ || store(cell.coefficients, block, cell_place)) return;
    }
    special_[static_cast<std::size_t>(row)].push_back(cell);
  });
}

bool CorrectionTable::store(const CellCoefficients& coefficients, std::int16_t* block,
                            std::size_t cell) const {
  std::array<float, kCoefficients> encoded;
  for (std::size_t i = 0; i < kCoefficients; ++i) {
    encoded[i] = scale_.encode(i, coefficients[i]);
    constexpr float kGreatestBlack = 32767;
    if (std::abs(encoded[i]) > (i < kMean ? kGreatestBlack : kGreatestDeviation)) return false;
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
