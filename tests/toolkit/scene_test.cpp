// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "toolkit/simulation/scene.h"

#include <gtest/gtest.h>

#include <cmath>

#include "toolkit/simulation/mosaic_camera.h"

using namespace kv::polarization;

namespace {

// Worked out with Stokes vectors and Mueller matrices, turned into each plane of incidence.
TEST(Scene, AgreesWithMuellerCalculus) {
  struct Point {
    int column, row;
    Stokes light;
  };
  const Point points[] = {
      {200, 5, {0.60428, 0.00863, 0.37675}},      // sky
      {20, 30, {0.57837, -0.13775, 0.40770}},     // sky, away from the sun
      {380, 60, {0.42664, 0.14716, 0.12804}},     // water, far
      {60, 200, {0.07877, 0.02024, 0.02771}},     // water, near
      {120, 130, {0.14227, 0.03222, 0.08061}},    // sphere, towards the sun
      {150, 160, {0.03701, -0.00054, -0.00106}},  // sphere that reflects water
      {230, 190, {0.01246, 0.00112, 0.00217}},    // sphere, its lower half
      {80, 264, {0.7, 0.63, 0}},                  // the film discs
      {160, 264, {0.7, 0, 0.56}},
      {240, 264, {0.7, -0.49, 0}},
      {320, 264 + 22, {0.7, 0, -0.42}},
      {320, 264 + 23, {0.01, 0, 0}},  // rim
      {320 - 24, 264, {0.01, 0, 0}},
  };
  const Scene scene(400, 300);
  for (const auto& [column, row, light] : points) {
    const Stokes seen = scene.at(column, row);
    EXPECT_LT(std::hypot(seen.s0 - light.s0, seen.s1 - light.s1, seen.s2 - light.s2), 2e-5)
        << column << ", " << row;
  }
}

// In the middle of the 0 and 45 degree discs the polarizers pass (s0 +- s1) / 2 and (s0 +- s2) / 2.
TEST(MosaicCamera, PutsThePolarizersBehindThePixelsOfThePhase) {
  struct Case {
    int phase, column;
    double passed[4];  // top left, top right, bottom left, bottom right
  };
  const Case cases[] = {{kv_polar_phase_0, 80, {0.665, 0.35, 0.35, 0.035}},
                        {kv_polar_phase_0, 160, {0.35, 0.07, 0.63, 0.35}},
                        {kv_polar_phase_45, 160, {0.63, 0.35, 0.35, 0.07}},
                        {kv_polar_phase_90, 80, {0.035, 0.35, 0.35, 0.665}},
                        {kv_polar_phase_135, 160, {0.07, 0.35, 0.35, 0.63}}};
  const Scene scene(400, 300);
  for (const auto& [phase, column, passed] : cases) {
    for (const int bit_depth : {16, 10}) {
      const Frame frame =
          photograph(scene, 400, 300, {.phase = phase, .bit_depth = bit_depth, .noise = false});
      EXPECT_EQ(frame.bit_depth, bit_depth);
      for (int i = 0; i < 4; ++i) {
        const auto index = static_cast<std::size_t>((264 + i / 2) * 400 + column + i % 2);
        EXPECT_NEAR(frame.samples[index], passed[i] * ((1 << bit_depth) - 1), 0.5)
            << "phase " << phase << ", pixel " << i;
      }
    }
  }
}

// In electrons the variance is the signal and the square of the read noise, 2.5. What the seed does
// shows in the tool's frames.
TEST(MosaicCamera, NoiseIsOfTheRightSizeAndIndependent) {
  const Scene scene(200, 150);
  const Frame noisy = photograph(scene, 200, 150, {});
  const Frame clean = photograph(scene, 200, 150, {.noise = false});
  double sum = 0;
  double squares = 0;
  double products_of_neighbours = 0;
  double previous = 0;
  for (std::size_t i = 0; i < clean.samples.size(); ++i) {
    const double electrons = clean.samples[i] * 10500.0 / 65535;
    const double noise = noisy.samples[i] * 10500.0 / 65535 - electrons;
    const double in_deviations = noise / std::sqrt(electrons + 6.25);
    sum += in_deviations;
    squares += in_deviations * in_deviations;
    products_of_neighbours += in_deviations * previous;
    previous = in_deviations;
  }
  const auto count = static_cast<double>(clean.samples.size());
  EXPECT_NEAR(sum / count, 0, 0.03);
  EXPECT_NEAR(squares / count, 1, 0.03);
  EXPECT_NEAR(products_of_neighbours / count, 0, 0.03);
}

}  // namespace
