// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "toolkit/calibration/correction/cell_matrix.h"

#include <cmath>
#include <numbers>

namespace kv::polarization {
namespace {

using Row = std::array<double, 3>;

/// Of the samples in the cell's own Stokes values: the results of CellMatrix.
CellOf<Row> analyser_rows(const CellOf<PixelModel>& pixels, const CellAngles& angles) {
  // The light that makes `first` 1 is polarized along the first pixel, twice as strong; that of
  // `second`, along the second one, which is 45 degrees to the one or the other side.
  const bool turns_left = (angles[1] - angles[0] + 180) % 180 == 45;
  CellOf<Row> rows;
  for (std::size_t place = 0; place < 4; ++place) {
    const auto& [black, gain, diattenuation, deviation] = pixels[place];
    const double turn = (turns_left ? 1 : -1) * deviation * std::numbers::pi / 90;
    const double cosine = diattenuation * std::cos(turn);
    const double sine = diattenuation * std::sin(turn);
    // Nominal directions 0, 90, -90 and 180 degrees of the doubled angle.
    const CellOf<Row> directions = {
        {{1, cosine, sine}, {1, -sine, cosine}, {1, sine, -cosine}, {1, -cosine, -sine}}};
    for (std::size_t i = 0; i < 3; ++i) rows[place][i] = gain * directions[place][i];
  }
  return rows;
}

/// Of the symmetric matrix A^T A.
struct Normal {
  double aa = 0, ab = 0, ac = 0, bb = 0, bc = 0, cc = 0;

  void add(const Row& row) {
    const auto& [a, b, c] = row;
    aa += a * a;
    ab += a * b;
    ac += a * c;
    bb += b * b;
    bc += b * c;
    cc += c * c;
  }
};

std::optional<CellMatrix<double>> solve_rows(const CellOf<Row>& rows) {
  Normal n;
  for (const Row& row : rows) n.add(row);
  const Row upper = {n.bb * n.cc - n.bc * n.bc, n.ac * n.bc - n.ab * n.cc,
                     n.ab * n.bc - n.ac * n.bb};
  const double determinant = n.aa * upper[0] + n.ab * upper[1] + n.ac * upper[2];
  // By this measure four ideal pixels have 1/4, three of them 4/27.
  constexpr double least = 1e-5;
  const double scale = n.aa * n.aa * n.aa;
  if (!(determinant > least * scale) || !std::isfinite(scale)) return std::nullopt;
  const Row middle = {upper[1], n.aa * n.cc - n.ac * n.ac, n.ab * n.ac - n.aa * n.bc};
  const Row lower = {upper[2], middle[2], n.aa * n.bb - n.ab * n.ab};
  CellMatrix<double> matrix;
  for (std::size_t place = 0; place < 4; ++place) {
    const auto& [a, b, c] = rows[place];
    matrix.mean[place] = (upper[0] * a + upper[1] * b + upper[2] * c) / determinant;
    matrix.first[place] = (middle[0] * a + middle[1] * b + middle[2] * c) / determinant;
    matrix.second[place] = (lower[0] * a + lower[1] * b + lower[2] * c) / determinant;
  }
  return matrix;
}

}  // namespace

std::optional<CellMatrix<double>> solve(const CellOf<PixelModel>& pixels,
                                        const CellAngles& angles) {
  return solve_rows(analyser_rows(pixels, angles));
}

std::optional<CellMatrix<double>> solve_without(std::size_t place, const CellOf<PixelModel>& pixels,
                                                const CellAngles& angles) {
  CellOf<Row> rows = analyser_rows(pixels, angles);
  rows[place] = {};
  return solve_rows(rows);
}

}  // namespace kv::polarization
