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
double greatest_result(const CellCoefficients& cell, double greatest) {
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
    const auto matrix =
        bad_pixels == 0 ? solve(pixels, place_.angles)
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

/// How far coefficients of one kind lie from their means.
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

  /// The step that 16 bits want. Few cells are further out than 8 standard deviations; they would
  /// take resolution from all others.
  float step(float least) const {
    constexpr double kRange = 32767;
    const double range = std::min(greatest, 8 * std::sqrt(squares / std::max(count, 1.0)));
    return std::max(static_cast<float>(range / kRange), least);
  }
};

// Steps that keep means below 2^24: black levels are below 2^16, coefficients of solvable cells
// usually below 2.
constexpr float kLeastBlackStep = 1.0f / 256;
constexpr float kLeastMatrixStep = 1.0f / (1 << 22);

}  // namespace

CorrectionTable::CorrectionTable(const Calibration& calibration, const FramePlace& place,
                                 bool per_cell, int threads)
    : rows_((place.height + 1) / 2),
      columns_((place.width + 1) / 2),
      per_cell_(per_cell),
      special_(static_cast<std::size_t>(rows_)) {
  const CellSource source(calibration, place, per_cell);
  const CellCoefficients means = source.of_class_means();
  const double greatest_sample = std::min<int>(calibration.clip_level,
                                               full_scale(calibration.bit_depth));
  WorkerPool pool(std::min(WorkerPool::threads_of(threads), rows_));
  // In bands of rows, all cells but those of bad pixels.
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

  struct Found {
    Spread black;
    Spread matrix;
    double greatest_result = 0;
  };
  std::vector<Found> found(static_cast<std::size_t>(pool.threads()));
  for_cells([&](int band, int, const SpecialCell& cell) {
    if (cell.kind != SpecialCell::Kind::outlier) return;
    Found& of_band = found[static_cast<std::size_t>(band)];
    for (std::size_t i = 0; i < kCoefficients; ++i) {
      (i < kMean ? of_band.black : of_band.matrix).add(cell.coefficients[i] - means[i]);
    }
    of_band.greatest_result =
        std::max(of_band.greatest_result, kv::polarization::greatest_result(cell.coefficients,
                                                                            greatest_sample));
  });
  for (std::size_t band = 1; band < found.size(); ++band) {
    found[0].black.add(found[band].black);
    found[0].matrix.add(found[band].matrix);
    found[0].greatest_result = std::max(found[0].greatest_result, found[band].greatest_result);
  }
  greatest_result_ = found[0].greatest_result;
  scale_.black_step = found[0].black.step(kLeastBlackStep);
  scale_.matrix_step = found[0].matrix.step(kLeastMatrixStep);
  for (std::size_t i = 0; i < kCoefficients; ++i) {
    scale_.means[i] = std::round(means[i] / scale_.step(i));
  }

  deviations_.resize(per_cell ? kBlockSize * pixel_count(blocks(), rows_) : kBlockSize);
  std::fill(deviations_.begin(), deviations_.end(), std::int16_t{0});
  for_cells([&](int, int row, const SpecialCell& cell) { store(cell, row); });
}

void CorrectionTable::store(const SpecialCell& cell, int row) {
  std::array<float, kCoefficients> steps;
  bool fits = cell.kind == SpecialCell::Kind::outlier;
  for (std::size_t i = 0; i < kCoefficients; ++i) {
    steps[i] = std::round(cell.coefficients[i] / scale_.step(i) - scale_.means[i]);
    fits = fits && std::abs(steps[i]) <= 32767;
  }
  if (!fits) {
    special_[static_cast<std::size_t>(row)].push_back(cell);
    return;
  }
  if (!per_cell_) return;
  std::int16_t* block = deviations_.data() + start_of_block(row, cell.column / kBlockCells);
  for (std::size_t i = 0; i < kCoefficients; ++i) {
    block[i * kBlockCells + static_cast<std::size_t>(cell.column % kBlockCells)] =
        static_cast<std::int16_t>(steps[i]);
  }
}

CellCoefficients CorrectionTable::coefficients(int row, int column) const {
  const std::int16_t* values = block(row, column / kBlockCells) + column % kBlockCells;
  CellCoefficients cell;
  for (std::size_t i = 0; i < kCoefficients; ++i) {
    cell[i] = scale_.decode(i, values[i * kBlockCells]);
  }
  return cell;
}

}  // namespace kv::polarization
