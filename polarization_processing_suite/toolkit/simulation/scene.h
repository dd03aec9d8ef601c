// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <array>

#include "toolkit/simulation/light.h"

namespace kv::polarization {

/// A round polarizing film in front of a lamp; lengths are in pixels of the picture.
struct FilmDisc {
  double column;
  double row;
  double radius;
  int angle_degrees;  ///< of its light, 0 along the rows, counter-clockwise
  double dolp;        ///< of its light
};

/// A world whose polarization is known at every point: a glossy sphere that floats on rippled water
/// under a clear sky, and in front of it four film discs, which show whether a mosaic layout is
/// right.
class Scene {
 public:
  Scene(int width, int height);

  /// Light that reaches a point of the picture, in units of the camera's full scale.
  Stokes at(double column, double row) const;

  const std::array<FilmDisc, 4>& discs() const { return discs_; }

 private:
  double width_;
  double height_;
  std::array<FilmDisc, 4> discs_;
};

}  // namespace kv::polarization
