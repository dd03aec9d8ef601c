// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "kv/calibration/analyser.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

#include "toolkit/simulation/simulated_sensor.h"

using namespace kv::polarization;

namespace {

constexpr CellResponse kUneven = {
    {{0.97, 0.93, 1.2}, {1.03, 0.96, 44.1}, {0.99, 0.9, 90.4}, {1.01, 1, 134}}};

/// The samples of a cell by Malus' law.
CellSamples samples_of(const CellResponse& cell, double s0, double dolp, double angle) {
  CellSamples samples{};
  for (std::size_t i = 0; i < 4; ++i) {
    const double between = (angle - cell[i].orientation) * std::numbers::pi / 90;
    samples[i] = cell[i].gain / 2 * s0 * (1 + cell[i].diattenuation * dolp * std::cos(between));
  }
  return samples;
}

TEST(Analyser, TurnsSamplesBackIntoLight) {
  for (const double angle : {-80.0, 0.0, 30.0, 71.0}) {
    const StokesValues stokes =
        stokes_of_cell(stokes_matrix(kUneven), samples_of(kUneven, 900, 0.4, angle));
    EXPECT_NEAR(stokes[0], 900, 1e-9);
    EXPECT_NEAR(stokes[1], 360 * std::cos(angle * std::numbers::pi / 90), 1e-9);
    EXPECT_NEAR(stokes[2], 360 * std::sin(angle * std::numbers::pi / 90), 1e-9);
  }
  const CellResponse blind = {{{1, 0, 0}, {1, 0, 45}, {1, 0, 90}, {1, 0, 135}}};
  EXPECT_EQ(stokes_matrix(blind), StokesMatrix{});
}

TEST(Analyser, KnowsTheConditionOfIdealPolarizers) {
  const CellResponse ideal = {{{1, 1, 0}, {1, 1, 45}, {1, 1, 90}, {1, 1, 135}}};
  EXPECT_NEAR(condition_of(analyser_matrix(ideal)), std::numbers::sqrt2, 1e-12);
}

// A cell of the phase 0 holds 0 135 / 45 90; each of its pixels is to tell the same light.
TEST(Analyser, MakesWeightsForEveryPixelOfACell) {
  const CellSamples of_class = samples_of(kUneven, 900, 0.4, 30);
  const std::array<std::array<std::size_t, 2>, 2> cell{{{0, 3}, {1, 2}}};
  const Weights weights = library_weights(kUneven);
  const std::array sets{weights.behind_0, weights.behind_45, weights.behind_90, weights.behind_135};
  for (std::size_t row = 0; row < 2; ++row) {
    for (std::size_t column = 0; column < 2; ++column) {
      const std::array neighbours{of_class[cell[row][column]], of_class[cell[row][1 - column]],
                                  of_class[cell[1 - row][column]],
                                  of_class[cell[1 - row][1 - column]]};
      const CoefficientSet& set = sets[cell[row][column]];
      std::array<double, 3> sums{};
      for (std::size_t i = 0; i < 12; ++i) sums[i / 4] += set[i] * neighbours[i % 4];
      EXPECT_NEAR(sums[0] / 2, 900, 1e-3);
      EXPECT_NEAR(sums[1], 180, 1e-3);                        // 360 cos 60
      EXPECT_NEAR(sums[2], 180 * std::numbers::sqrt3, 1e-3);  // 360 sin 60
    }
  }
}

TEST(SimulatedSensor, TakesWhatItsTruthTells) {
  const SimulatedSensor sensor(
      {.width = 16, .height = 8, .mosaic = {kv_polar_phase_45, 1, 0}, .temporal_noise = false});
  const Frame frame = sensor.take(polarized_light(0.9, 20, 0.2), 3);
  const SensorTruth& truth = sensor.truth();
  for (std::size_t i = 0; i < frame.samples.size(); ++i) {
    const double between = (20 - static_cast<double>(truth.orientation[i])) * std::numbers::pi / 90;
    const double light = 0.9 * (1 + 0.2 * ((static_cast<double>(i % 16) + 0.5) / 16 - 0.5));
    EXPECT_NEAR(frame.samples[i],
                truth.black[i] + (4095 - 64) * light * truth.gain[i] / 2 *
                                     (1 + truth.diattenuation[i] * std::cos(between)),
                0.51);
  }
  EXPECT_NEAR(truth.orientation[0], 90, 5);  // 45 90 / 0 135, from column 1 on
  EXPECT_NEAR(truth.orientation[16], 135, 5);
}

}  // namespace
