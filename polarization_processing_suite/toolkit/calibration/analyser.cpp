// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "kv/calibration/analyser.h"

#include <Eigen/Dense>
#include <cmath>
#include <limits>
#include <numbers>

namespace kv::polarization {
namespace {

using Analyser = Eigen::Matrix<double, 4, 3, Eigen::RowMajor>;
using Inverse = Eigen::Matrix<double, 3, 4, Eigen::RowMajor>;

/// Classes at the pixel itself and its horizontal, vertical and diagonal neighbour, in steps of 45
/// degrees. Every phase and origin has the same neighbours.
constexpr std::array<std::array<int, 4>, 4> kNeighbours{
    {{0, 3, 1, 2}, {1, 2, 0, 3}, {2, 1, 3, 0}, {3, 0, 2, 1}}};

CoefficientSet set_behind(const StokesMatrix& matrix, const std::array<int, 4>& classes) {
  CoefficientSet set{};
  for (std::size_t row = 0; row < 3; ++row) {
    const double factor = row == 0 ? 2 : 1;  // the library halves the sum of S0
    for (std::size_t column = 0; column < 4; ++column) {
      const auto from = static_cast<std::size_t>(classes[column]);
      set[4 * row + column] = static_cast<float>(factor * matrix[4 * row + from]);
    }
  }
  return set;
}

}  // namespace

AnalyserMatrix analyser_matrix(const CellResponse& cell) {
  AnalyserMatrix matrix{};
  for (std::size_t row = 0; row < cell.size(); ++row) {
    const double twice = cell[row].orientation * std::numbers::pi / 90;
    const double half = cell[row].gain / 2;
    matrix[3 * row] = half;
    matrix[3 * row + 1] = half * cell[row].diattenuation * std::cos(twice);
    matrix[3 * row + 2] = half * cell[row].diattenuation * std::sin(twice);
  }
  return matrix;
}

StokesMatrix stokes_matrix(const CellResponse& cell) {
  const AnalyserMatrix values = analyser_matrix(cell);
  const Eigen::Map<const Analyser> matrix(values.data());
  const Eigen::Matrix3d normal = matrix.transpose() * matrix;
  StokesMatrix result{};
  Eigen::Matrix3d inverse;
  bool invertible = false;
  normal.computeInverseWithCheck(inverse, invertible, 1e-9);
  if (invertible) Eigen::Map<Inverse>(result.data()) = inverse * matrix.transpose();
  return result;
}

StokesValues stokes_of_cell(const StokesMatrix& matrix, const CellSamples& samples) {
  StokesValues stokes{};
  for (std::size_t row = 0; row < stokes.size(); ++row) {
    for (std::size_t column = 0; column < samples.size(); ++column) {
      stokes[row] += matrix[4 * row + column] * samples[column];
    }
  }
  return stokes;
}

double condition_of(const AnalyserMatrix& matrix) {
  const Eigen::Vector3d singular =
      Eigen::JacobiSVD<Eigen::Matrix<double, 4, 3>>(Eigen::Map<const Analyser>(matrix.data()))
          .singularValues();
  return singular[2] > 0 ? singular[0] / singular[2] : std::numeric_limits<double>::infinity();
}

CellResponse class_responses(const Calibration& calibration) {
  CellResponse cell{};
  for (std::size_t number = 0; number < cell.size(); ++number) {
    const PixelClass& pixels = calibration.classes[number];
    cell[number] = {pixels.gain.value, pixels.diattenuation.value, pixels.orientation.value};
  }
  return cell;
}

Weights library_weights(const CellResponse& classes) {
  const StokesMatrix matrix = stokes_matrix(classes);
  return {set_behind(matrix, kNeighbours[0]), set_behind(matrix, kNeighbours[1]),
          set_behind(matrix, kNeighbours[2]), set_behind(matrix, kNeighbours[3])};
}

Weights library_weights(const Calibration& calibration) {
  return library_weights(class_responses(calibration));
}

}  // namespace kv::polarization
