// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <array>

namespace kv::polarization {

/// Weights of the Stokes estimate at the pixels behind one polarizer: 4 rows (S0, whose sum is
/// halved afterwards; S1; S2; a spare one) of 4 columns (the pixel, its horizontal, its vertical
/// and its diagonal neighbour in the 2x2 neighbourhood), row by row.
using CoefficientSet = std::array<float, 16>;

/// The weights of one camera. Values are not checked.
struct Weights {
  /// At the pixels behind polarizers of that angle, degrees.
  CoefficientSet behind_0{};
  CoefficientSet behind_45{};
  CoefficientSet behind_90{};
  CoefficientSet behind_135{};

  bool operator==(const Weights&) const = default;
};

/// Which pixels a processor's weights count in.
enum class WeightReach {
  /// As in a call of the library: in all but the vector area, which is most of a frame and has the
  /// default weights.
  as_library,
  /// In every pixel. Pixels of rows 2n and 2n + 1 are made of the samples of these two rows alone,
  /// and those of the last two rows of an odd height, of the last two.
  every_pixel
};

}  // namespace kv::polarization
