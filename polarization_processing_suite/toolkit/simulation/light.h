// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "toolkit/simulation/vector3.h"

namespace kv::polarization {

/// Linear Stokes values; angles counter-clockwise from the image's rows.
struct Stokes {
  double s0 = 0;
  double s1 = 0;
  double s2 = 0;

  double dolp() const;
  double angle_degrees() const;  ///< of linear polarization, -90 to 90
};

/// Linearly and partially polarized light as the coherency tensor of its electric field in space,
/// <E E^T>, a symmetric matrix whose trace is the radiance (Born and Wolf, Principles of Optics,
/// 10.8). Stokes values would need a frame of reference that turns at every surface.
class Light {
 public:
  static Light unpolarized(double radiance, Vector3 direction);

  /// Light of that degree of polarization whose field swings along `axis`, a unit vector across
  /// its direction.
  static Light polarized(double radiance, double dolp, Vector3 direction, Vector3 axis);

  /// The tensor with these components along the unit vectors a and b, which are at right angles.
  static Light from_components(Vector3 a, Vector3 b, double aa, double ab, double bb);

  /// a^T <E E^T> b
  double component(Vector3 a, Vector3 b) const;

  /// As a camera sees it whose rows run to the `right` and whose columns run down, against `up`.
  Stokes stokes(Vector3 right, Vector3 up) const;

  Light& operator+=(const Light& other);

 private:
  double xx_ = 0, xy_ = 0, xz_ = 0, yy_ = 0, yz_ = 0, zz_ = 0;
};

/// A smooth dielectric surface at the point where a ray from outside meets it.
class DielectricSurface {
 public:
  /// `incoming` is the ray's direction; the unit normal points outwards.
  DielectricSurface(Vector3 incoming, Vector3 normal, double refractive_index);

  /// The direction towards the source of light that the surface reflects to the camera.
  Vector3 mirrored() const { return mirrored_; }

  /// Light that travels against mirrored() and is reflected towards the camera.
  Light reflect(const Light& light) const;

  /// Unpolarized light from within, which becomes polarized as it leaves through the surface.
  Light emit(double radiance) const;

 private:
  Vector3 incoming_;
  Vector3 mirrored_;
  Vector3 across_;       // at right angles to the plane of incidence
  double reflection_s_;  // amplitude, field along across_
  double reflection_p_;  // amplitude, field within the plane of incidence
};

}  // namespace kv::polarization
