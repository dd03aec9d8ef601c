// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

// What maps tell of noise, clipping and edges, against simulated frames of known light.

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

#include "kv/polarization/maps.h"
#include "toolkit/simulation/mosaic_camera.h"

using namespace kv::polarization;

namespace {

constexpr int kSide = 360;

struct UniformLight {
  double s0;  // electrons
  double dolp;
  double angle;

  LightField field(const CameraSettings& camera) const {
    const double twice = angle * std::numbers::pi / 90;
    const double unit = s0 / camera.full_well;
    const Stokes light{unit, unit * dolp * std::cos(twice), unit * dolp * std::sin(twice)};
    return [light](double, double) { return light; };
  }
};

MapSettings settings_of(const CameraSettings& camera) {
  const double gain = (full_scale(camera.bit_depth) - camera.black_level) / camera.full_well;
  return {.samples = {.black_level = static_cast<float>(camera.black_level),
                      .noise = SensorNoise{static_cast<float>(gain),
                                           static_cast<float>(camera.read_noise)}}};
}

Maps maps_of(const LightField& light, const CameraSettings& camera, const MapSettings& settings) {
  const Frame frame = photograph(light, kSide, kSide, camera);
  Maps maps;
  maps.reshape(kSide, kSide, MapSet::all());
  MapMaker().fill(frame, {camera.phase}, settings, maps.views());
  return maps;
}

/// Of the pixels that share no sample and have a value, less `offset`, with 180 added or taken away
/// as makes it least.
struct Spread {
  Spread(const Maps& maps, Map map, double offset = 0) {
    double sum = 0;
    double squares = 0;
    for (std::size_t row = 0; row < kSide; row += 2) {
      for (std::size_t column = 0; column < kSide; column += 2) {
        const double value = maps.values(map)[row * kSide + column];
        if (std::isnan(value)) continue;
        const double difference = std::remainder(value - offset, map == Map::angle ? 180 : 1e9);
        ++count;
        sum += difference;
        squares += difference * difference;
      }
    }
    mean = sum / count;
    rms = std::sqrt(squares / count);
    deviation = std::sqrt(squares / count - mean * mean);
  }
  double count = 0, mean, rms, deviation;
};

const double kCells = kSide * kSide / 4.0;

// In 32400 cells a standard deviation is known to 0.4 per cent.
TEST(MapNoise, IsPredicted) {
  struct Case {
    UniformLight light;
    CameraSettings camera;
  };
  const CameraSettings usual{.phase = kv_polar_phase_90, .bit_depth = 12};
  const CameraSettings with_black{.bit_depth = 12, .full_well = 1000, .black_level = 200};
  const CameraSettings coarse{.bit_depth = 8, .full_well = 10500, .read_noise = 8};
  const Case cases[] = {
      {{60, 0.7, 20}, usual},      {{60, 1, -45}, with_black}, {{200, 0.23, 80}, usual},
      {{200, 0.4, 0}, with_black}, {{600, 0.13, 30}, usual},   {{600, 1, 0}, with_black},
      {{2000, 0.2, 90}, coarse},   {{2000, 0.7, -10}, coarse}, {{8000, 0.035, 60}, usual},
      {{8000, 0.4, 22.5}, usual},  {{8000, 1, -67.5}, usual},  {{10000, 1, 0}, usual}};
  for (const auto& [light, camera] : cases) {
    SCOPED_TRACE(testing::Message() << "S0 " << light.s0 << ", DoLP " << light.dolp);
    const Maps maps = maps_of(light.field(camera), camera, settings_of(camera));
    const auto expect_predicted = [&](Map map, Map sigma, double offset, double tolerance) {
      const double true_sigma = Spread(maps, map, offset).deviation;
      EXPECT_NEAR(Spread(maps, sigma).rms / true_sigma, 1, tolerance) << kMaps[index_of(map)].name;
    };
    expect_predicted(Map::s0, Map::s0_sigma, 0, 0.02);
    expect_predicted(Map::s1, Map::s1_sigma, 0, 0.02);
    expect_predicted(Map::s2, Map::s2_sigma, 0, 0.02);
    expect_predicted(Map::dolp, Map::dolp_sigma, 0, 0.05);
    const double snr = light.dolp / Spread(maps, Map::dolp).deviation;
    EXPECT_GT(snr, 3);
    if (snr > 4) expect_predicted(Map::angle, Map::angle_sigma, light.angle, 0.07);
    EXPECT_LT(std::abs(Spread(maps, Map::angle, light.angle).mean), 0.02 * 90 / snr);
  }
}

// Where nothing is known but that there is little polarization.
TEST(MapNoise, IsTakenOffDolpAndFlaggedWhereItHidesTheLight) {
  const CameraSettings camera{.bit_depth = 12};
  for (const double dolp : {0.0, 0.03, 0.05, 0.1, 0.2}) {
    const Maps maps =
        maps_of(UniformLight{600, dolp, 35}.field(camera), camera, settings_of(camera));
    const double naive = Spread(maps, Map::dolp, dolp).mean;
    const double debiased = Spread(maps, Map::debiased_dolp, dolp).mean;
    EXPECT_GT(naive, 0) << dolp;
    EXPECT_LT(std::abs(debiased), 0.9 * naive) << dolp;
    std::size_t hidden = 0;
    for (const std::uint8_t flags : maps.quality()) hidden += (flags & quality::below_noise) != 0;
    const double told = 1 - static_cast<double>(hidden) / (kSide * kSide);
    EXPECT_NEAR(told, Spread(maps, Map::angle_sigma).count / kCells, 0.01);
    // exp(-9 / 2) without polarization; 0.2 is 4.9 sigma.
    EXPECT_TRUE(dolp == 0 ? told > 0.005 && told < 0.015 : dolp < 0.2 || told > 0.95) << told;
  }
}

// The samples behind 0 degrees are clipped all over. With the same light on a sensor that holds
// twice as many electrons nothing is.
TEST(MapNoise, RescueMakesGoodForClippedSamples) {
  for (const double dolp : {0.6, 0.75, 0.9}) {
    const UniformLight light{14000, dolp, 0};
    const CameraSettings clipping{.bit_depth = 12};
    const CameraSettings deep{.bit_depth = 13, .full_well = 21000};
    MapSettings settings = settings_of(clipping);
    const double lost =
        Spread(maps_of(light.field(clipping), clipping, settings), Map::dolp, dolp).rms;
    const double unclipped =
        Spread(maps_of(light.field(deep), deep, settings_of(deep)), Map::dolp, dolp).rms;
    settings.samples.rescue = true;
    const Maps maps = maps_of(light.field(clipping), clipping, settings);
    const Spread rescued(maps, Map::dolp, dolp);
    EXPECT_LT(rescued.rms, 1.1 * unclipped) << dolp;
    EXPECT_GT(lost, 2 * unclipped) << dolp;
    EXPECT_NEAR(Spread(maps, Map::dolp_sigma).rms / rescued.deviation, 1, 0.03) << dolp;
    EXPECT_EQ(maps.quality()[0], quality::clipped | quality::rescued);
  }
}

// A texture of 6 pixels, and edges that a lens blurs over two pixels; all of it unpolarized.
TEST(MapNoise, CompensationHalvesFalsePolarization) {
  const CameraSettings camera{.bit_depth = 12, .noise = false};
  const MapSettings plain = settings_of(camera);
  MapSettings compensating = plain;
  compensating.compensation = IntensityCompensation{};
  for (const double slope : {0.0, 0.36, 1.0, 6.0}) {
    const LightField light = [slope](double column, double row) {
      const double distance = (column - 180 + slope * (row - 180)) / std::hypot(1, slope);
      const double texture = std::sin(column * 1.05) * std::cos(row * 0.8);
      return Stokes{(0.6 + 0.42 * std::tanh(distance)) * (1 + 0.3 * texture), 0, 0};
    };
    EXPECT_LT(Spread(maps_of(light, camera, compensating), Map::dolp).rms,
              0.5 * Spread(maps_of(light, camera, plain), Map::dolp).rms);
  }
}

}  // namespace
