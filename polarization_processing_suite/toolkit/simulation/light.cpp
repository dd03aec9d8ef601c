// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "toolkit/simulation/light.h"

#include <cmath>
#include <numbers>

namespace kv::polarization {
namespace {

/// A unit vector at right angles to a.
Vector3 any_across(Vector3 a) {
  return unit(std::abs(a.x) < 0.7 ? cross(a, {1, 0, 0}) : cross(a, {0, 1, 0}));
}

}  // namespace

double Stokes::dolp() const { return s0 > 0 ? std::hypot(s1, s2) / s0 : 0; }

double Stokes::angle_degrees() const { return std::atan2(s2, s1) * 90.0 / std::numbers::pi; }

Light Light::unpolarized(double radiance, Vector3 direction) {
  return polarized(radiance, 0, direction, any_across(direction));
}

Light Light::polarized(double radiance, double dolp, Vector3 direction, Vector3 axis) {
  return from_components(axis, cross(direction, axis), radiance * (1 + dolp) / 2, 0,
                         radiance * (1 - dolp) / 2);
}

Light Light::from_components(Vector3 a, Vector3 b, double aa, double ab, double bb) {
  Light light;
  light.xx_ = aa * a.x * a.x + 2 * ab * a.x * b.x + bb * b.x * b.x;
  light.xy_ = aa * a.x * a.y + ab * (a.x * b.y + a.y * b.x) + bb * b.x * b.y;
  light.xz_ = aa * a.x * a.z + ab * (a.x * b.z + a.z * b.x) + bb * b.x * b.z;
  light.yy_ = aa * a.y * a.y + 2 * ab * a.y * b.y + bb * b.y * b.y;
  light.yz_ = aa * a.y * a.z + ab * (a.y * b.z + a.z * b.y) + bb * b.y * b.z;
  light.zz_ = aa * a.z * a.z + 2 * ab * a.z * b.z + bb * b.z * b.z;
  return light;
}

double Light::component(Vector3 a, Vector3 b) const {
  return a.x * (xx_ * b.x + xy_ * b.y + xz_ * b.z) + a.y * (xy_ * b.x + yy_ * b.y + yz_ * b.z) +
         a.z * (xz_ * b.x + yz_ * b.y + zz_ * b.z);
}

Stokes Light::stokes(Vector3 right, Vector3 up) const {
  const double horizontal = component(right, right);
  const double vertical = component(up, up);
  return {horizontal + vertical, horizontal - vertical, 2 * component(right, up)};
}

Light& Light::operator+=(const Light& other) {
  xx_ += other.xx_;
  xy_ += other.xy_;
  xz_ += other.xz_;
  yy_ += other.yy_;
  yz_ += other.yz_;
  zz_ += other.zz_;
  return *this;
}

DielectricSurface::DielectricSurface(Vector3 incoming, Vector3 normal, double refractive_index)
    : incoming_(incoming), mirrored_(incoming - 2 * dot(incoming, normal) * normal) {
  const Vector3 across = cross(incoming, normal);
  across_ = dot(across, across) > 1e-12 ? unit(across) : any_across(normal);
  // Snell's law, then Fresnel's equations for the amplitudes (Hecht, Optics, 4.6.2).
  const double n = refractive_index;
  const double cos_in = -dot(incoming, normal);
  const double cos_out = std::sqrt(1 - (1 - cos_in * cos_in) / (n * n));
  reflection_s_ = (cos_in - n * cos_out) / (cos_in + n * cos_out);
  reflection_p_ = (n * cos_in - cos_out) / (n * cos_in + cos_out);
}

Light DielectricSurface::reflect(const Light& light) const {
  const Vector3 p_arriving = cross(-1 * mirrored_, across_);
  const Vector3 p_leaving = cross(-1 * incoming_, across_);
  const double s = reflection_s_;
  const double p = reflection_p_;
  return Light::from_components(across_, p_leaving, s * s * light.component(across_, across_),
                                s * p * light.component(across_, p_arriving),
                                p * p * light.component(p_arriving, p_arriving));
}

Light DielectricSurface::emit(double radiance) const {
  // By reciprocity a surface lets as much light out as it would let in along the same path.
  const Vector3 p_leaving = cross(-1 * incoming_, across_);
  return Light::from_components(across_, p_leaving,
                                radiance / 2 * (1 - reflection_s_ * reflection_s_), 0,
                                radiance / 2 * (1 - reflection_p_ * reflection_p_));
}

}  // namespace kv::polarization
