#include "toolkit/processor.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <numbers>
#include <random>
#include <utility>

#include "error_of.h"

namespace {

// The mosaic that begins with each phase: top left, top right, bottom left, bottom right.
constexpr int kMosaics[4][4] = {
    {0, 135, 45, 90}, {45, 90, 0, 135}, {90, 45, 135, 0}, {135, 0, 90, 45}};

constexpr int kOutputMax = 4095;

kv::Frame random_frame(unsigned width, unsigned height) {
  kv::Frame frame = kv::make_frame(width, height, 12);
  std::mt19937 random(width * 1000 + height);
  for (auto& sample : frame.samples) sample = static_cast<std::uint16_t>(random() % 2047 + 1);
  return frame;
}

/// What the planes hold of a pixel, in the order of kPlanes.
using PixelValues = std::array<double, 7>;

/// From the samples that the pixel's 2x2 neighbourhood has behind each polarizer; mirrored at the
/// right and bottom edges.
PixelValues expected_at(const kv::Frame& frame, const kv::TransformSettings& settings, int row,
                        int column) {
  std::array<double, 136> behind{};  // by angle
  for (const int r : {row, row + 1 < frame.height ? row + 1 : row - 1}) {
    for (const int c : {column, column + 1 < frame.width ? column + 1 : column - 1}) {
      const int place = 2 * ((r + settings.y_origin) % 2) + (c + settings.x_origin) % 2;
      behind[static_cast<std::size_t>(kMosaics[settings.phase][place])] =
          frame.samples[static_cast<std::size_t>(r * frame.width + c)];
    }
  }
  const double s0 = (behind[0] + behind[45] + behind[90] + behind[135]) / 2;
  const double s1 = behind[0] - behind[90];
  const double s2 = behind[45] - behind[135];
  const double azimuth = (std::atan2(s2, s1) / std::numbers::pi + 1) / 2;
  const double dolp = std::min(std::hypot(s1, s2) / s0, 1.0);
  return {s1 / s0,          s2 / s0, s0, std::max(s1, 0.0), std::max(s2, 0.0), azimuth * kOutputMax,
          dolp * kOutputMax};
}

/// As far as the library approximates: S0 to 0.06 per cent with its reciprocal, angles to 0.15
/// degree.
bool is_close(const kv::Planes& planes, std::size_t index, const PixelValues& expected) {
  constexpr PixelValues kTolerances = {0.001, 0.001, 2, 0.5, 0.5, 5, 4};
  for (std::size_t i = 0; i < expected.size(); ++i) {
    const double actual = i < 2 ? planes.normalized_stokes[2 * index + i]
                                : planes.levels(kv::kPlanes[i - 1].plane)[index];
    // -90 and +90 degrees, the ends of the azimuth plane, are one orientation.
    const double error = std::remainder(actual - expected[i], i == 5 ? kOutputMax : 1e9);
    if (!(std::abs(error) <= kTolerances[i])) return false;
  }
  return true;
}

void expect_planes(const kv::Planes& planes, const kv::Frame& frame,
                   const kv::TransformSettings& settings) {
  const auto holds = [&](int row, int column, int source_column) {
    return is_close(planes, static_cast<std::size_t>(row * frame.width + column),
                    expected_at(frame, settings, row, source_column));
  };
  for (int row = 0; row < frame.height; ++row) {
    for (int column = 0; column < frame.width; ++column) {
      // Where just one side is odd, the library gives the last pixel other weights.
      const bool is_last = row + 1 == frame.height && column + 1 == frame.width;
      if (is_last && frame.width % 2 != frame.height % 2) continue;
      // Every fourth column of the vector area may repeat its left neighbour.
      ASSERT_TRUE(holds(row, column, column) || (column % 4 == 3 && holds(row, column, column - 1)))
          << "row " << row << ", column " << column;
    }
  }
}

// 2 is the least side, 4 the least width of taller frames, 8 the least width with a vector area, 5
// the least height at which the library packs pairs; both parities of each.
TEST(Processor, FillsEveryPixelOfEveryPlaneAskedFor) {
  const kv::Processor processor;
  kv::Planes all;
  kv::Planes some;
  for (const unsigned width : {2u, 3u, 4u, 5u, 7u, 8u, 9u, 12u, 21u, 22u}) {
    for (const unsigned height : {2u, 3u, 4u, 5u, 6u, 7u, 10u, 11u}) {
      if (width < 4 && height > 2) continue;
      const kv::Frame frame = random_frame(width, height);
      for (int number = 1; number < 64; ++number) {
        SCOPED_TRACE(testing::Message() << width << " x " << height << ", number " << number);
        kv::TransformSettings settings{.phase = number % 4,
                                       .x_origin = number / 4 % 2,
                                       .y_origin = number / 8 % 2,
                                       .output_max = kOutputMax};
        processor.transform(frame, settings, all);
        expect_planes(all, frame, settings);
        settings.planes = kv::OutputSet::from_number(static_cast<std::size_t>(number));
        processor.transform(frame, settings, some);
        if (!settings.planes.has(kv::Plane::normalized_stokes)) all.normalized_stokes.clear();
        EXPECT_EQ(some.normalized_stokes, all.normalized_stokes);
        for (const kv::PlaneTraits& traits : kv::kPlanes) {
          if (!settings.planes.has(traits.plane)) all.levels(traits.plane).clear();
          EXPECT_EQ(some.levels(traits.plane), all.levels(traits.plane)) << traits.name;
        }
      }
    }
  }
}

TEST(Processor, RefusesWhatTheLibraryCannotDo) {
  using Settings = kv::TransformSettings;
  using Spoil = void (*)(kv::Frame&, Settings&);
  const std::pair<const char*, Spoil> refusals[] = {
      {"1 x 6 pixels", [](auto& frame, auto&) { frame = random_frame(1, 6); }},
      {"6 x 1 pixels", [](auto& frame, auto&) { frame = random_frame(6, 1); }},
      {"4 or more", [](auto& frame, auto&) { frame = random_frame(3, 3); }},
      {"48 samples, but has 47", [](auto& frame, auto&) { frame.samples.pop_back(); }},
      {"depth of 17", [](auto& frame, auto&) { frame.bit_depth = 17; }},
      {"depth of 0", [](auto& frame, auto&) { frame.bit_depth = 0; }},
      {"output maximum", [](auto&, auto& settings) { settings.output_max = 0; }},
      {"origin", [](auto&, auto& settings) { settings.x_origin = -1; }},
      {"origin", [](auto&, auto& settings) { settings.y_origin = -1; }},
      {"phase", [](auto&, auto& settings) { settings.phase = 4; }},
      {"phase", [](auto&, auto& settings) { settings.phase = -1; }},
      {"plane", [](auto&, auto& settings) { settings.planes = {}; }},
  };
  for (const auto& [part_of_message, spoil] : refusals) {
    kv::Frame frame = random_frame(8, 6);
    Settings settings;
    spoil(frame, settings);
    kv::Planes planes;
    EXPECT_PRED2(contains, error_of([&] { kv::Processor().transform(frame, settings, planes); }),
                 part_of_message);
    EXPECT_EQ(planes.width, 0);
  }
}

}  // namespace
