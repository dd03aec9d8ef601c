#pragma once

#include <array>

namespace kv::polarization {

/// Weights of the Stokes estimate at the pixels behind one polarizer: 4 rows (S0, S1, S2, a spare one)
/// of 4 columns (the pixel, its horizontal, its vertical and its diagonal neighbour). The C header
/// tells more.
using CoefficientSet = std::array<float, 16>;

/// The weights of one camera.
struct Weights {
  CoefficientSet behind_0{};
  CoefficientSet behind_45{};
  CoefficientSet behind_90{};
  CoefficientSet behind_135{};

  bool operator==(const Weights&) const = default;
};

}  // namespace kv::polarization
