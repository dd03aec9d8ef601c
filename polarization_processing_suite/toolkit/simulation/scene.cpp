// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "toolkit/simulation/scene.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <optional>

namespace kv::polarization {
namespace {

// Lengths are in metres: x to the right, y up, z towards the camera, the water at y = 0.
constexpr double kWaterIndex = 1.333;
constexpr double kSphereIndex = 1.5;
constexpr Vector3 kSphereCentre = {0, 0.62, -0.9};
constexpr double kSphereRadius = 1.25;
constexpr Vector3 kCamera = {0, 2.6, 6.2};
constexpr double kCameraPitchDegrees = -17;
constexpr double kHalfFieldOfView = 0.37;  // tangent of half the vertical field of view

// To the left and a little behind the camera, so that the sky ahead is the strongly polarized band
// at a right angle to the sun.
const Vector3 kToSun = unit({-0.6, 0.6, 0.3});

// Radiance of the lamp-lit discs, the sky, the light from within the water, and the sunlit sphere.
constexpr double kDiscRadiance = 0.7;
constexpr double kSkyRadiance = 0.62;
constexpr double kWaterRadiance = 0.04;
constexpr double kSphereRadiance = 0.05;

/// Reflections between sphere and water fade fast: a fourth one would be lost in the noise.
constexpr int kMostReflections = 3;

struct Ray {
  Vector3 origin;
  Vector3 direction;
};

/// Light of a clear sky by single scattering (Rayleigh): polarized across the plane through the
/// sun, most strongly at a right angle to it, where real skies reach a DoLP of 0.75.
Light sky_light(Vector3 direction) {
  const double cos_sun = dot(direction, kToSun);
  const double sin2 = 1 - cos_sun * cos_sun;
  const double dolp = 0.75 * sin2 / (1 + cos_sun * cos_sun);
  const double towards_horizon = std::pow(1 - std::clamp(direction.y, 0.0, 1.0), 4);
  const double radiance =
      kSkyRadiance * (0.6 + 0.4 * towards_horizon) * (1 + 0.5 * cos_sun * cos_sun);
  if (sin2 < 1e-9) return Light::unpolarized(radiance, direction);
  return Light::polarized(radiance, dolp, -1 * direction, unit(cross(direction, kToSun)));
}

/// Distance along the ray to the sphere; none where they do not meet.
std::optional<double> distance_to_sphere(const Ray& ray) {
  const Vector3 offset = ray.origin - kSphereCentre;
  const double half_b = dot(offset, ray.direction);
  const double c = dot(offset, offset) - kSphereRadius * kSphereRadius;
  const double discriminant = half_b * half_b - c;
  if (discriminant < 0) return std::nullopt;
  const double distance = -half_b - std::sqrt(discriminant);
  if (distance < 1e-9) return std::nullopt;
  return distance;
}

std::optional<double> distance_to_water(const Ray& ray) {
  if (ray.direction.y >= 0) return std::nullopt;
  const double distance = -ray.origin.y / ray.direction.y;
  if (distance < 1e-9) return std::nullopt;
  return distance;
}

/// Three trains of small waves, which flatten far away, where pixels could not resolve them.
Vector3 water_normal(Vector3 place) {
  const double far = place.z < kCamera.z ? (kCamera.z - place.z) / 9 : 0;
  const double slope = 0.022 / (1 + far * far * far);
  const double a = slope * std::sin(5.1 * place.x + 8.3 * place.z);
  const double b = slope * std::sin(-3.7 * place.x + 11.9 * place.z + 1.0);
  const double c = slope * std::sin(9.2 * place.x - 4.1 * place.z + 2.5);
  return unit({0.5 * (a - b) + 0.8 * c, 1, a + b - 0.4 * c});
}

Light light_along(const Ray& ray, int reflections_left);

Light light_of_surface(const Ray& ray, double distance, Vector3 normal, double index,
                       double radiance_within, int reflections_left) {
  const DielectricSurface surface(ray.direction, normal, index);
  Light light = surface.emit(radiance_within);
  if (reflections_left > 0) {
    const Vector3 place = ray.origin + distance * ray.direction;
    light += surface.reflect(light_along({place, surface.mirrored()}, reflections_left - 1));
  }
  return light;
}

Light light_along(const Ray& ray, int reflections_left) {
  const std::optional<double> to_water = distance_to_water(ray);
  const std::optional<double> to_sphere = distance_to_sphere(ray);
  if (to_sphere && (!to_water || *to_sphere < *to_water)) {
    const Vector3 place = ray.origin + *to_sphere * ray.direction;
    const Vector3 normal = unit(place - kSphereCentre);
    // A fifth of the light comes from all around, the rest from the sun by Lambert's law.
    const double within = kSphereRadiance * (0.2 + 0.8 * std::max(0.0, dot(normal, kToSun)));
    return light_of_surface(ray, *to_sphere, normal, kSphereIndex, within, reflections_left);
  }
  if (to_water) {
    const Vector3 place = ray.origin + *to_water * ray.direction;
    Vector3 normal = water_normal(place);
    // A wave seen from its back would be hidden by the one before it.
    if (dot(normal, ray.direction) > -1e-3) normal = {0, 1, 0};
    return light_of_surface(ray, *to_water, normal, kWaterIndex, kWaterRadiance, reflections_left);
  }
  return sky_light(ray.direction);
}

/// A film that passes the fraction T1 of the light along its axis and T2 across turns the lamp's
/// unpolarized light into light of DoLP (T1 - T2) / (T1 + T2).
Stokes disc_light(const FilmDisc& disc) {
  const double twice_angle = disc.angle_degrees * std::numbers::pi / 90.0;
  const double length = kDiscRadiance * disc.dolp;
  return {kDiscRadiance, length * std::cos(twice_angle), length * std::sin(twice_angle)};
}

std::array<FilmDisc, 4> make_discs(double width, double height) {
  const double radius = 0.075 * std::min(width, height);
  std::array<FilmDisc, 4> discs{};
  for (std::size_t i = 0; i < discs.size(); ++i) {
    const auto number = static_cast<double>(i);
    discs[i] = {width * (0.2 + 0.2 * number), 0.88 * height, radius, 45 * static_cast<int>(i),
                0.9 - 0.1 * number};
  }
  return discs;
}

}  // namespace

Scene::Scene(int width, int height)
    : width_(width), height_(height), discs_(make_discs(width, height)) {}

Stokes Scene::at(double column, double row) const {
  for (const FilmDisc& disc : discs_) {
    const double distance = std::hypot(column - disc.column, row - disc.row);
    if (distance < disc.radius) return disc_light(disc);
    if (distance < 1.1 * disc.radius) return {0.01, 0, 0};  // the black rim
  }
  const double pitch = kCameraPitchDegrees * std::numbers::pi / 180.0;
  const Vector3 ahead = {0, std::sin(pitch), -std::cos(pitch)};
  const Vector3 camera_right = {1, 0, 0};
  const Vector3 camera_up = cross(camera_right, ahead);
  const double scale = 2 * kHalfFieldOfView / height_;
  const Vector3 direction = unit(ahead + scale * (column + 0.5 - width_ / 2) * camera_right -
                                 scale * (row + 0.5 - height_ / 2) * camera_up);
  // The field is across the ray: the camera's axes are tilted with it, `right` staying along rows.
  const Vector3 right = unit(cross(direction, camera_up));
  const Vector3 up = cross(right, direction);
  return light_along({kCamera, direction}, kMostReflections).stokes(right, up);
}

}  // namespace kv::polarization
