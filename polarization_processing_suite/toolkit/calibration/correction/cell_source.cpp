// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "toolkit/calibration/correction/cell_source.h"

#include "kv/polarization/frame.h"

namespace kv::polarization {
namespace {

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

}  // namespace

PixelModel CellSource::class_model(std::size_t place) const {
  const int angle = place_.angles[place];
  const PixelClass& all = calibration_.classes[static_cast<std::size_t>(angle / 45)];
  return {all.black.value, all.gain.value, all.diattenuation.value, all.orientation.value - angle};
}

PixelModel CellSource::pixel_model(std::size_t pixel) const {
  const PixelMaps& maps = calibration_.maps;
  return {maps.black[pixel], maps.gain[pixel], maps.diattenuation[pixel], maps.orientation[pixel]};
}

CellRecord CellSource::at(int row, int column) const {
  CellOf<PixelModel> pixels;
  std::size_t bad_pixels = 0;
  CellRecord cell;
  cell.column = column;
  for (std::size_t place = 0; place < 4; ++place) {
    const int y = place < 2 ? 2 * row : second_of_cell(row, place_.height);
    const int x = place % 2 == 0 ? 2 * column : second_of_cell(column, place_.width);
    const std::size_t pixel = pixel_count(calibration_.width, place_.row + y) +
                              static_cast<std::size_t>(place_.column + x);
    const bool is_bad = calibration_.maps.bad[pixel] != 0;
    pixels[place] = per_cell_ && !is_bad ? pixel_model(pixel) : class_model(place);
    if (!is_bad) continue;
    ++bad_pixels;
    cell.bad_place = place;
  }
  const auto matrix = bad_pixels == 0   ? solve(pixels, place_.angles)
                      : bad_pixels == 1 ? solve_without(cell.bad_place, pixels, place_.angles)
                                        : std::nullopt;
  cell.kind = !matrix           ? CellRecord::Kind::not_solvable
              : bad_pixels == 1 ? CellRecord::Kind::one_bad
                                : CellRecord::Kind::all_good;
  cell.coefficients = coefficients_of(pixels, matrix.value_or(CellMatrix<double>{}));
  return cell;
}

CellCoefficients CellSource::of_class_means() const {
  CellOf<PixelModel> pixels;
  for (std::size_t place = 0; place < 4; ++place) pixels[place] = class_model(place);
  return coefficients_of(pixels, solve(pixels, place_.angles).value_or(CellMatrix<double>{}));
}

}  // namespace kv::polarization
