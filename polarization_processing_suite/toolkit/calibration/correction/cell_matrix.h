// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <array>
#include <cstddef>
#include <optional>

#include "kv/polarization/mosaic.h"

namespace kv::polarization {

/// What a pixel is: its row of the analyser matrix is gain / 2 (1, D cos 2a, D sin 2a).
struct PixelModel {
  double black = 0;  ///< counts
  double gain = 1;
  double diattenuation = 1;  ///< D
  double deviation = 0;      ///< of the orientation a from the nominal angle, degrees
};

/// A cell's pixels: top left, top right, bottom left, bottom right.
template <class T>
using CellOf = std::array<T, 4>;

/// From the samples of a cell above black to those of ideal pixels, without a word of the phase:
/// polarizers at right angles lie on the diagonals, and so the four results are
///
///     mean + first,  mean + second,  mean - second,  mean - first,
///
/// where mean is S0 / 2, and first and second are S1 / 2 and S2 / 2 in some order and sign.
template <class T>
struct CellMatrix {
  CellOf<T> mean{};
  CellOf<T> first{};
  CellOf<T> second{};
};

/// The least squares solution; none where the pixels do not tell the Stokes values apart.
std::optional<CellMatrix<double>> solve(const CellOf<PixelModel>& pixels, const CellAngles& angles);

/// The solution from three of the pixels; the one at `place` gets coefficients of 0.
std::optional<CellMatrix<double>> solve_without(std::size_t place, const CellOf<PixelModel>& pixels,
                                                const CellAngles& angles);

/// The sample at `place` with which the cell fits its matrix: that which makes the least squares
/// solution the one from the other three.
template <class T>
T fitting_sample(std::size_t place, const CellMatrix<T>& matrix, const CellOf<T>& samples) {
  // The samples that fit are at right angles to a vector, whose rows are at right angles to it too.
  const auto minor = [&](std::size_t left_out) {
    const std::size_t a = left_out == 0 ? 1 : 0;
    const std::size_t b = left_out <= 1 ? 2 : 1;
    const std::size_t c = left_out <= 2 ? 3 : 2;
    const auto& [m, f, s] = matrix;
    const T determinant = m[a] * (f[b] * s[c] - f[c] * s[b]) - m[b] * (f[a] * s[c] - f[c] * s[a]) +
                          m[c] * (f[a] * s[b] - f[b] * s[a]);
    return left_out % 2 == 0 ? determinant : -determinant;
  };
  T others = 0;
  for (std::size_t other = 0; other < 4; ++other) {
    if (other != place) others += minor(other) * samples[other];
  }
  return -others / minor(place);
}

}  // namespace kv::polarization
