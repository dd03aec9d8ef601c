#include "toolkit/scene/scene.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numbers>

#include "toolkit/processor.h"
#include "toolkit/scene/mosaic_camera.h"

namespace {

constexpr kv::Vector3 right = {1, 0, 0};
constexpr kv::Vector3 up = {0, 1, 0};

/// A ray that travels away from the camera in the plane of x and z onto a surface facing +z.
kv::Vector3 ray_at_incidence(double degrees) {
  const double angle = degrees * std::numbers::pi / 180;
  return {std::sin(angle), 0, -std::cos(angle)};
}

kv::Stokes seen(const kv::Light& light, const kv::Vector3& ray) {
  return light.stokes(kv::unit(kv::cross(ray, up)), up);
}

TEST(DielectricSurface, FollowsFresnelsEquations) {
  constexpr double n = 1.5;
  const double brewster = std::atan(n) * 180 / std::numbers::pi;
  struct Case {
    double incidence, reflectance, dolp;
  };
  // Reflectances of glass for unpolarized light, from the sine and tangent
  // forms of the equations, which the code doesn't use.
  const Case cases[] = {
      {0, 0.04, 0}, {45, 0.05024, 0.8315}, {brewster, 0.07396, 1}, {80, 0.38770, 0.3892}};
  for (const Case& c : cases) {
    const kv::Vector3 ray = ray_at_incidence(c.incidence);
    const kv::DielectricSurface surface(ray, {0, 0, 1}, n);
    const auto arriving = kv::Light::unpolarized(1, surface.mirrored());
    const kv::Stokes reflected = seen(surface.reflect(arriving), ray);
    EXPECT_NEAR(reflected.s0, c.reflectance, 1e-4) << c.incidence;
    EXPECT_NEAR(reflected.dolp(), c.dolp, 1e-3) << c.incidence;
    // Light from within lacks what the surface reflects: polarized the other way round.
    const kv::Stokes emitted = seen(surface.emit(1), ray);
    EXPECT_NEAR(emitted.s0, 1 - reflected.s0, 1e-9) << c.incidence;
    EXPECT_NEAR(emitted.s1, -reflected.s1, 1e-9) << c.incidence;
    if (c.dolp > 0) {
      EXPECT_NEAR(std::abs(reflected.angle_degrees()), 90, 1e-6);
    }
  }
}

TEST(DielectricSurface, ReflectsPolarizedLightAsAMirrorDoes) {
  // At normal incidence the field keeps its direction in space, so that an angle stays as it is
  // for who looks at the surface.
  const kv::Vector3 ray = {0, 0, -1};
  const kv::DielectricSurface surface(ray, {0, 0, 1}, 1.5);
  const kv::Vector3 axis = kv::unit({1, 0.5, 0});
  const auto arriving = kv::Light::polarized(1, 0.6, {0, 0, -1}, axis);
  const kv::Stokes stokes = surface.reflect(arriving).stokes(right, up);
  EXPECT_NEAR(stokes.dolp(), 0.6, 1e-9);
  EXPECT_NEAR(stokes.angle_degrees(), std::atan(0.5) * 180 / std::numbers::pi, 1e-9);
}

TEST(MosaicCamera, SameSeedSameFrameAndNoiseOfTheRightSize) {
  const kv::Scene scene(200, 150);
  kv::CameraSettings settings;
  const kv::Frame first = kv::photograph(scene, 200, 150, settings);
  EXPECT_EQ(kv::photograph(scene, 200, 150, settings).samples, first.samples);
  settings.seed = 2;
  EXPECT_NE(kv::photograph(scene, 200, 150, settings).samples, first.samples);
  settings.noise = false;
  const kv::Frame clean = kv::photograph(scene, 200, 150, settings);

  // In electrons the variance is the signal and the square of the read noise, 2.5.
  double sum = 0;
  double squares = 0;
  for (std::size_t i = 0; i < clean.samples.size(); ++i) {
    const double electrons = clean.samples[i] * 10500.0 / 65535;
    const double noise = (first.samples[i] - clean.samples[i]) * 10500.0 / 65535;
    const double in_deviations = noise / std::sqrt(electrons + 6.25);
    sum += in_deviations;
    squares += in_deviations * in_deviations;
  }
  const auto count = static_cast<double>(clean.samples.size());
  EXPECT_NEAR(sum / count, 0, 0.03);
  EXPECT_NEAR(squares / count, 1, 0.05);
}

// Where the scene is smooth, the planes of a noiseless frame are the scene's own polarization.
TEST(Scene, IsRecoveredByTheTransform) {
  constexpr int width = 400;
  constexpr int height = 340;
  const kv::Scene scene(width, height);
  kv::CameraSettings camera;
  camera.noise = false;
  camera.phase = kv_polar_phase_135;
  kv::TransformSettings settings;
  settings.phase = camera.phase;
  kv::Planes planes;
  kv::Processor().transform(kv::photograph(scene, width, height, camera), settings, planes);

  std::vector<double> dolp_errors;
  std::vector<double> angle_errors;
  for (int row = 0; row + 1 < height; ++row) {
    for (int column = 0; column + 1 < width; ++column) {
      // Four pixels make a value; its place is their common corner.
      const kv::Stokes truth = scene.at(column + 0.5, row + 0.5);
      const auto index = static_cast<std::size_t>(row * width + column);
      dolp_errors.push_back(
          std::abs(planes.levels(kv::Plane::dolp)[index] / 65535.0 - truth.dolp()));
      if (truth.dolp() < 0.1) continue;
      const double angle = planes.levels(kv::Plane::azimuth)[index] * 180 / 65535.0 - 90;
      angle_errors.push_back(std::abs(std::remainder(angle - truth.angle_degrees(), 180)));
    }
  }
  const auto at_fraction = [](std::vector<double>& values, double fraction) {
    std::sort(values.begin(), values.end());
    return values[static_cast<std::size_t>(fraction * static_cast<double>(values.size() - 1))];
  };
  EXPECT_LT(at_fraction(dolp_errors, 0.5), 0.003);
  EXPECT_LT(at_fraction(dolp_errors, 0.9), 0.03);
  EXPECT_LT(at_fraction(angle_errors, 0.5), 0.5);
  EXPECT_LT(at_fraction(angle_errors, 0.9), 2);
}

}  // namespace
