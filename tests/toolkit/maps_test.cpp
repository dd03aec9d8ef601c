// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "kv/polarization/maps.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <random>
#include <string>
#include <utility>

#include "error_of.h"
#include "toolkit/api/maps/approximations.h"
#include "toolkit/api/maps/map_rows.h"

using namespace kv::polarization;

namespace {

// The mosaic that begins with each phase: top left, top right, bottom left, bottom right.
constexpr int kAnglesByPhase[4][4] = {
    {0, 135, 45, 90}, {45, 90, 0, 135}, {90, 45, 135, 0}, {135, 0, 90, 45}};

Frame random_frame(int width, int height) {
  Frame frame = make_frame(static_cast<unsigned>(width), static_cast<unsigned>(height), 12);
  std::mt19937 random(static_cast<unsigned>(width * 1000 + height));
  for (auto& sample : frame.samples) sample = static_cast<std::uint16_t>(random() % 4096);
  return frame;
}

Maps maps_of(const Frame& frame, const Mosaic& mosaic, const MapSettings& settings,
             MapSet wanted = MapSet::all()) {
  Maps maps;
  maps.reshape(frame.width, frame.height, wanted);
  MapMaker().fill(frame, mosaic, settings, maps.views());
  return maps;
}

bool is_close(double actual, double expected, double tolerance) {
  return std::isnan(expected) ? std::isnan(actual) : std::abs(actual - expected) <= tolerance;
}

/// A pixel's neighbourhood by a second way: samples by the number of their polarizer, 0 to 135
/// degrees, as a function of which all else is computed.
struct Cell {
  double samples[4];
  double variances[4];
  double gains[4] = {1, 1, 1, 1};
  bool clipped[4];

  int count_clipped() const { return static_cast<int>(std::count(clipped, clipped + 4, true)); }

  struct Light {
    double s0, s1, s2;
    double dolp() const { return std::hypot(s1, s2) / s0; }
    double angle() const { return std::atan2(s2, s1) * 90 / std::numbers::pi; }
  };
  Light light(bool rescue) const {
    double x[4];
    std::copy_n(samples, 4, x);
    const auto lost = std::find(clipped, clipped + 4, true) - clipped;
    if (rescue && count_clipped() == 1) {
      x[lost] = x[(lost + 1) % 4] + x[(lost + 3) % 4] - x[(lost + 2) % 4];
    }
    for (int i = 0; i < 4; ++i) x[i] *= gains[i];
    return {(x[0] + x[1] + x[2] + x[3]) / 2, x[0] - x[2], x[1] - x[3]};
  }

  /// By the slope of a value along each sample.
  template <class Value>
  double sigma(bool rescue, Value value) const {
    double variance = 0;
    for (int i = 0; i < 4; ++i) {
      Cell more = *this;
      Cell less = *this;
      more.samples[i] += 0.01;
      less.samples[i] -= 0.01;
      // Angles of -90 and 90 degrees are one; no other difference is near 180.
      const double step =
          std::remainder(value(more.light(rescue)) - value(less.light(rescue)), 180);
      variance += variances[i] * step * step / (0.02 * 0.02);
    }
    return std::sqrt(variance);
  }
};

struct Reference {
  const Frame& frame;
  Mosaic mosaic;
  MapSettings settings;

  int at(int row, int column) const {
    const auto mirror = [](int i, int size) { return i < 0 ? 1 : i >= size ? size - 2 : i; };
    return frame.samples[static_cast<std::size_t>(mirror(row, frame.height) * frame.width +
                                                  mirror(column, frame.width))];
  }
  double mean(int row, int column) const {
    double sum = 0;
    for (int i = -1; i <= 1; ++i) {
      for (int j = -1; j <= 1; ++j) sum += (2 - i * i) * (2 - j * j) * at(row + i, column + j);
    }
    return sum / 16 - double{settings.samples.black_level};
  }
  Cell cell(int row, int column) const {
    Cell cell{};
    double sum_of_means = 0;
    for (const int r : {row, row + 1 < frame.height ? row + 1 : row - 1}) {
      for (const int c : {column, column + 1 < frame.width ? column + 1 : column - 1}) {
        const int place = 2 * ((r + mosaic.y_origin) % 2) + (c + mosaic.x_origin) % 2;
        const int i = kAnglesByPhase[mosaic.phase][place] / 45;
        const double counts = at(r, c) - double{settings.samples.black_level};
        cell.samples[i] = counts;
        cell.variances[i] = 0.4 * std::max(counts, 0.0) + 1 + 1.0 / 12;
        cell.clipped[i] = at(r, c) >= 4000;
        cell.gains[i] = 1 / mean(r, c);
        sum_of_means += mean(r, c);
      }
    }
    for (double& gain : cell.gains) gain = settings.compensation ? gain * sum_of_means / 4 : 1;
    return cell;
  }
};

constexpr SensorNoise kNoise{0.4f, 2.5f};

MapSettings noisy_settings() {
  return {.samples = {.black_level = 100, .clip_level = 4000, .noise = kNoise}};
}

void expect_pixel(const Maps& maps, const Reference& reference, int row, int column) {
  using Light = Cell::Light;
  const bool rescue = reference.settings.samples.rescue;
  const Cell cell = reference.cell(row, column);
  const Light light = cell.light(rescue);
  const auto index = static_cast<std::size_t>(row * maps.width() + column);
  const auto near = [&](Map map, double expected, double tolerance) {
    const double actual = maps.values(map)[index];
    EXPECT_TRUE(is_close(actual, expected, tolerance))
        << kMaps[index_of(map)].name << " is " << actual << " instead of " << expected << " at row "
        << row << ", column " << column;
  };
  near(Map::s0, light.s0, 0.002);
  near(Map::s1, light.s1, 0.002);
  near(Map::s2, light.s2, 0.002);
  near(Map::dolp, light.dolp(), 2e-7 + 2e-6 * light.dolp());
  near(Map::angle, light.angle(), 2e-5 + 0.01 / std::hypot(light.s1, light.s2));
  const auto sigma = [&](auto value) { return cell.sigma(rescue, value); };
  near(Map::s0_sigma, sigma([](const Light& l) { return l.s0; }), 0.001);
  near(Map::s1_sigma, sigma([](const Light& l) { return l.s1; }), 0.001);
  near(Map::s2_sigma, sigma([](const Light& l) { return l.s2; }), 0.001);
  const double dolp_sigma = sigma([](const Light& l) { return l.dolp(); });
  const double angle_sigma = sigma([](const Light& l) { return l.angle(); });
  const double snr = light.dolp() / dolp_sigma;
  near(Map::dolp_sigma, dolp_sigma, 2e-4 * dolp_sigma);
  const double b = angle_sigma * std::numbers::pi / 90 * light.dolp();
  const double bias =
      b * b * (1 - std::exp(-light.dolp() * light.dolp() / (b * b))) / (2 * light.dolp());
  near(Map::debiased_dolp, light.dolp() - bias, 1e-5 * (1 + light.dolp()));
  if (std::abs(snr - 3) > 0.001) {
    near(Map::angle_sigma, snr < 3 ? std::nan("") : angle_sigma, 2e-4 * angle_sigma);
  }
  const int clipped = cell.count_clipped();
  const int flags =
      (clipped > 0 ? quality::clipped : 0) | (rescue && clipped == 1 ? quality::rescued : 0) |
      (light.dolp() > 1 ? quality::dolp_above_1 : 0) | (snr < 3 ? quality::below_noise : 0);
  EXPECT_EQ(maps.quality()[index], flags) << "at row " << row << ", column " << column;
}

// Widths around the 256 pixels that are worked on at a time; all phases, origins and options.
TEST(Maps, HoldWhatTheFormulasSay) {
  int number = 0;
  for (const int width : {2, 3, 4, 9, 255, 256, 257, 258}) {
    for (const int height : {2, 3, 6}) {
      for (int turn = 0; turn < (width < 10 ? 16 : 3); ++turn, ++number) {
        const Frame frame = random_frame(width, height);
        const Mosaic mosaic{number % 4, number / 4 % 2, number / 8 % 2};
        MapSettings settings = noisy_settings();
        settings.samples.rescue = number % 3 != 0;
        if (number % 5 == 0) settings.compensation = {.least_mean = 1};
        SCOPED_TRACE(testing::Message() << width << " x " << height << ", number " << number);
        const Maps maps = maps_of(frame, mosaic, settings);
        for (int row = 0; row < height; ++row) {
          for (int column = 0; column < width; ++column) {
            expect_pixel(maps, {frame, mosaic, settings}, row, column);
          }
        }
        if (testing::Test::HasFailure()) return;
      }
    }
  }
}

// Each mosaic lit so that I0 = 800, I45 = 600, I90 = 200, I135 = 400: S1 = 600, S2 = 200.
TEST(Maps, TellOneLightAtEveryPixelOfEveryMosaic) {
  constexpr std::uint16_t cells[4][4] = {
      {800, 400, 600, 200}, {600, 200, 800, 400}, {200, 600, 400, 800}, {400, 800, 200, 600}};
  for (int number = 0; number < 16; ++number) {
    const Mosaic mosaic{number % 4, number / 4 % 2, number / 8 % 2};
    Frame frame = make_frame(3, 3, 12);
    for (std::size_t i = 0; i < 9; ++i) {
      const int row = static_cast<int>(i / 3) + mosaic.y_origin;
      const int column = static_cast<int>(i % 3) + mosaic.x_origin;
      frame.samples[i] = cells[mosaic.phase][2 * (row % 2) + column % 2];
    }
    const Maps maps = maps_of(frame, mosaic, {}, MapSet(Map::angle));
    for (const float angle : maps.values(Map::angle)) {
      EXPECT_NEAR(angle, 9.2174744, 2e-5) << number;
    }
  }
}

// A cell of phase 0, whose samples are I0, I135, I45, I90. With a gain of 1 and no read noise the
// variance of a sample is its counts and 1/12.
TEST(Maps, FlagWhatNotToBelieve) {
  struct Case {
    const char* name;
    std::uint16_t cell[4];
    MapSettings settings;
    int flags;
    float s0, dolp, angle;
  };
  const float nan = std::nanf("");
  const SampleSettings plain{.noise = SensorNoise{1, 0}};
  SampleSettings rescuing = plain;
  rescuing.rescue = true;
  SampleSettings early = plain;
  early.clip_level = 900;
  SampleSettings above_black = plain;
  above_black.black_level = 100;
  const std::uint8_t bad[16] = {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 255};
  SampleSettings with_bad = plain;
  with_bad.bad_pixels = {bad, 4, 4};
  const MapSettings evened{plain, IntensityCompensation{}};
  using namespace quality;
  const Case cases[] = {
      {"sound", {1000, 500, 500, 0}, {plain}, 0, 1000, 1, 0},
      {"along the columns", {0, 500, 500, 1000}, {plain}, 0, 1000, 1, 90},
      {"unpolarized", {500, 500, 500, 500}, {plain}, below_noise, 1000, 0, 0},
      {"black", {0, 0, 0, 0}, {plain}, dark | below_noise, 0, nan, nan},
      {"below black", {90, 99, 100, 100}, {above_black}, dark | below_noise, -5.5, nan, nan},
      {"more than all", {1000, 0, 0, 0}, {plain}, dolp_above_1, 500, 2, 0},
      {"clipped", {4095, 3000, 3000, 1000}, {plain}, clipped, 5547.5f, 0.5579090f, 0},
      {"clipped early", {900, 500, 500, 100}, {early}, clipped, 1000, 0.8f, 0},
      {"rescued", {4095, 2500, 2500, 100}, {rescuing}, clipped | rescued, 5000, 0.96f, 0},
      {"two", {4095, 4095, 0, 0}, {rescuing}, clipped | dolp_above_1, 4095, 1.4142136f, -22.5f},
      {"bad", {1000, 500, 500, 0}, {with_bad}, bad_pixel, 1000, 1, 0},
      {"even", {500, 500, 500, 500}, evened, below_noise, 1000, 0, 0},
      {"too dark", {3, 3, 3, 3}, evened, below_noise | not_compensated, 6, 0, 0},
  };
  for (const auto& [name, cell, settings, flags, s0, dolp, angle] : cases) {
    Frame frame = make_frame(2, 2, 12);
    std::copy_n(cell, 4, frame.samples.begin());
    // On the sensor the frame begins at column 2, row 2: only its lower right pixel is bad.
    const Maps maps = maps_of(frame, {.x_origin = 2, .y_origin = 2}, settings);
    EXPECT_EQ(maps.quality()[0], flags) << name;
    EXPECT_EQ(maps.values(Map::s0)[0], s0) << name;
    EXPECT_TRUE(is_close(maps.values(Map::dolp)[0], dolp, 1e-6)) << name;
    EXPECT_TRUE(is_close(maps.values(Map::angle)[0], angle, 2e-5)) << name;
  }
}

bool same_bytes(std::span<const float> a, std::span<const float> b) {
  return std::ranges::equal(std::as_bytes(a), std::as_bytes(b));
}

// Whatever else is asked for, and in whatever bands of rows.
TEST(Maps, HaveTheSameBytesHoweverTheyAreAskedFor) {
  const Frame frame = random_frame(259, 11);
  MapSettings settings = noisy_settings();
  settings.samples.rescue = true;
  for (const bool compensated : {false, true}) {
    if (compensated) settings.compensation = IntensityCompensation{};
    const Maps all = maps_of(frame, {}, settings);
    Maps bands;
    bands.reshape(259, 11, MapSet::all());
    const FramePart part{frame.samples.data(), 259, 11, 12, {}};
    for (const auto& [first, last] : {std::pair(10, 11), {0, 3}, {3, 4}, {4, 10}}) {
      map_rows(part, {}, settings, bands.views(), first, last);
    }
    EXPECT_TRUE(std::ranges::equal(bands.quality(), all.quality()));
    EXPECT_TRUE(std::ranges::equal(maps_of(frame, {}, settings, MapSet(Map::quality)).quality(),
                                   all.quality()));
    for (const MapTraits& traits : kMaps) {
      if (traits.map == Map::quality) continue;
      const Maps alone = maps_of(frame, {}, settings, MapSet(traits.map));
      EXPECT_TRUE(same_bytes(alone.values(traits.map), all.values(traits.map))) << traits.name;
      EXPECT_TRUE(same_bytes(bands.values(traits.map), all.values(traits.map))) << traits.name;
    }
  }
}

struct MapRequest {
  Frame frame = random_frame(8, 6);
  Mosaic mosaic{};
  MapSettings settings = noisy_settings();
  Buffer<float> values = Buffer<float>(96);
  Buffer<std::uint8_t> bytes = Buffer<std::uint8_t>(48);
  MapViews maps{.s0 = std::span(values).first(48), .angle_sigma = std::span(values).last(48)};
  void tell_bad(std::size_t size) {
    settings.samples.bad_pixels = {std::span(bytes).first(size), 8, 6};
  }
};

TEST(Maps, RefuseWhatCannotBe) {
  using Spoil = void (*)(MapRequest&);
  const std::pair<const char*, Spoil> refusals[] = {
      {"1 x 6 pixels holds no", [](MapRequest& r) { r.frame.width = 1; }},
      {"no map", [](MapRequest& r) { r.maps = {}; }},
      {"s0 has room for 47", [](MapRequest& r) { r.maps.s0 = r.maps.s0.first(47); }},
      {"s1 overlaps that of s0", [](MapRequest& r) { r.maps.s1 = std::span(r.values).last(49); }},
      {"angle_sigma is made of the noise", [](MapRequest& r) { r.settings.samples.noise = {}; }},
      {"gain of 0", [](MapRequest& r) { r.settings.samples.noise->gain = 0; }},
      {"black level", [](MapRequest& r) { r.settings.samples.black_level = std::nanf(""); }},
      {"least mean", [](MapRequest& r) { r.settings.compensation = {.least_mean = 0}; }},
      {"8 x 6 pixels, has 47 bytes", [](MapRequest& r) { r.tell_bad(47); }},
      {"does not cover", [](MapRequest& r) { r.tell_bad(48), r.mosaic.x_origin = 1; }},
      {"does not cover", [](MapRequest& r) { r.tell_bad(48), r.mosaic.y_origin = 1; }},
      {"bad pixels overlaps", [](MapRequest& r) { r.tell_bad(48), r.maps.quality = r.bytes; }},
  };
  for (const auto& [part_of_message, spoil] : refusals) {
    MapRequest r;
    spoil(r);
    EXPECT_PRED2(contains,
                 error_of([&] { MapMaker().fill(r.frame, r.mosaic, r.settings, r.maps); }),
                 part_of_message);
  }
}

TEST(Approximations, AreAsExactAsTheySay) {
  double worst_angle = 0;
  for (double radian = -std::numbers::pi; radian < std::numbers::pi; radian += 1e-4) {
    const auto y = static_cast<float>(3000 * std::sin(radian));
    const auto x = static_cast<float>(3000 * std::cos(radian));
    const double expected = std::atan2(y, x) * 90 / std::numbers::pi;
    const float actual = half_atan2_degrees(y, x);
    EXPECT_TRUE(actual > -90 && actual <= 90) << radian;
    worst_angle = std::max(worst_angle, std::abs(std::remainder(actual - expected, 180)));
  }
  EXPECT_LT(worst_angle, 2e-5);
  constexpr float special[][3] = {{0, 0, 0},       {-0.0f, 0, 0},        {0, -1, 90},
                                  {-0.0f, -1, 90}, {-1e-9f, -1, 90},     {-0.5f, 0, -45},
                                  {0, 7, 0},       {65535, 65535, 22.5f}};
  for (const auto& [y, x, angle] : special) {
    EXPECT_NEAR(half_atan2_degrees(y, x), angle, 2e-5) << y << ", " << x;
  }
  double worst_mean = std::abs(mean_of_exp_minus(0) - 1);
  for (float x = 1e-6f; x < 1e6f; x *= 1.001f) {
    worst_mean = std::max(worst_mean, std::abs(mean_of_exp_minus(x) + std::expm1(-double{x}) / x));
  }
  EXPECT_LT(worst_mean, 6e-6);
}

}  // namespace
