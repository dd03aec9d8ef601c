// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "toolkit/calibration/correction/special_cells.h"

#include <algorithm>
#include <cmath>

#include "kv/polarization/quality.h"

namespace kv::polarization {
namespace {

constexpr CellOf<std::uint16_t> kAllSaturated = {kSaturated, kSaturated, kSaturated, kSaturated};

CellMatrix<double> matrix_of(const CellCoefficients& all) {
  CellMatrix<double> matrix;
  for (std::size_t place = 0; place < 4; ++place) {
    matrix.mean[place] = all[kMean + place];
    matrix.first[place] = all[kFirst + place];
    matrix.second[place] = all[kSecond + place];
  }
  return matrix;
}

double product(const CellOf<double>& row, const CellOf<double>& samples) {
  return (row[0] * samples[0] + row[1] * samples[1]) + (row[2] * samples[2] + row[3] * samples[3]);
}

CellOf<double> ideal_samples(const CellMatrix<double>& matrix, const CellOf<double>& samples) {
  const double mean = product(matrix.mean, samples);
  const double first = product(matrix.first, samples);
  const double second = product(matrix.second, samples);
  return {mean + first, mean + second, mean - second, mean - first};
}

/// Whether all of them are within the range of a corrected frame.
bool encode(const CellOf<double>& values, const OutputScale& output,
            CellOf<std::uint16_t>& samples) {
  bool fits = true;
  for (std::size_t place = 0; place < 4; ++place) {
    const double counts = std::floor(values[place] * output.factor + output.pedestal + 0.5);
    fits = fits && counts <= kGreatestCorrected;
    samples[place] = static_cast<std::uint16_t>(std::clamp<double>(counts, 0, kGreatestCorrected));
  }
  return fits;
}

}  // namespace

CorrectedCell correct_special(const CellRecord& cell, const CellOf<std::uint16_t>& samples,
                              std::uint16_t clip_level, bool rescue, const OutputScale& output) {
  using Kind = CellRecord::Kind;
  CellOf<double> counts;
  std::size_t clipped = 0;
  std::size_t clipped_place = 0;
  for (std::size_t place = 0; place < 4; ++place) {
    counts[place] = samples[place] - static_cast<double>(cell.coefficients[place]);
    const bool counts_as_sample = cell.kind != Kind::one_bad || place != cell.bad_place;
    if (samples[place] < clip_level || !counts_as_sample) continue;
    ++clipped;
    clipped_place = place;
  }
  const auto flag = [](bool holds, quality::Flag bit) { return holds ? bit : 0; };
  const bool has_bad = cell.kind != Kind::all_good;
  CorrectedCell corrected{};
  corrected.flags = static_cast<std::uint8_t>(flag(clipped != 0, quality::clipped) |
                                              flag(has_bad, quality::bad_pixel));
  if (cell.kind == Kind::not_solvable) {
    encode(counts, output, corrected.samples);
    return corrected;
  }
  const CellMatrix<double> matrix = matrix_of(cell.coefficients);
  const bool rescues = clipped == 1 && rescue && !has_bad;
  if (rescues) counts[clipped_place] = fitting_sample(clipped_place, matrix, counts);
  const bool fits = encode(ideal_samples(matrix, counts), output, corrected.samples);
  if (!fits || (clipped != 0 && !rescues)) {
    corrected.samples = kAllSaturated;
    corrected.flags |= quality::clipped;
  } else if (rescues) {
    corrected.flags |= quality::rescued;
  } else if (has_bad) {
    corrected.flags = quality::rescued;
  }
  return corrected;
}

}  // namespace kv::polarization
