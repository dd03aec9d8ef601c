#include "toolkit/processor.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <numbers>
#include <random>
#include <vector>

#include "error_of.h"

namespace {

// The mosaic that begins with each phase: top left, top right, bottom left, bottom right.
constexpr int kMosaics[4][4] = {
    {0, 135, 45, 90}, {45, 90, 0, 135}, {90, 45, 135, 0}, {135, 0, 90, 45}};

constexpr int kOutputMax = 4095;

kv::Frame random_frame(int width, int height) {
  kv::Frame frame =
      kv::make_frame(static_cast<std::uint64_t>(width), static_cast<std::uint64_t>(height), 12);
  std::mt19937 random(static_cast<unsigned>(width * 1000 + height));
  for (auto& sample : frame.samples) sample = static_cast<std::uint16_t>(random() % 2047 + 1);
  return frame;
}

/// The planes at a pixel, from the samples that its 2x2 neighbourhood has behind each polarizer;
/// mirrored at the right and bottom edges.
std::vector<double> expected_at(const kv::Frame& frame, const kv::TransformSettings& settings,
                                int row, int column) {
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
  return {s1 / s0,
          s2 / s0,
          s0,
          std::max(s1, 0.0),
          std::max(s2, 0.0),
          azimuth * kOutputMax,
          std::min(std::hypot(s1, s2) / s0, 1.0) * kOutputMax};
}

/// As far as the library approximates: S0 to 0.06 per cent with its reciprocal, angles to 0.15
/// degree.
bool is_close(const kv::Planes& planes, std::size_t index, const std::vector<double>& expected) {
  constexpr double kTolerances[7] = {0.001, 0.001, 2, 0.5, 0.5, 5, 4};
  std::vector<double> actual = {planes.normalized_stokes[2 * index],
                                planes.normalized_stokes[2 * index + 1]};
  for (std::size_t plane = 1; plane < kv::kPlanes.size(); ++plane) {
    actual.push_back(planes.levels(kv::kPlanes[plane].plane)[index]);
  }
  for (std::size_t i = 0; i < actual.size(); ++i) {
    // -90 and +90 degrees, the ends of the azimuth plane, are one orientation.
    const double error = std::remainder(actual[i] - expected[i], i == 5 ? kOutputMax : 1e9);
    if (!(std::abs(error) <= kTolerances[i])) return false;
  }
  return true;
}

// 2 is the least side, 4 the least width of taller frames, 8 the least width with a vector area, 5
// the least height at which the library packs pairs; both parities of each.
TEST(Processor, FillsEveryPixelOfEveryPlane) {
  const kv::Processor processor;
  kv::Planes planes;
  for (const int width : {2, 3, 4, 5, 7, 8, 9, 12, 21, 22}) {
    for (const int height : {2, 3, 4, 5, 6, 7, 10, 11}) {
      if (width < 4 && height > 2) continue;
      const kv::Frame frame = random_frame(width, height);
      for (int variant = 0; variant < 16; ++variant) {
        const kv::TransformSettings settings{.phase = variant % 4,
                                             .x_origin = variant / 4 % 2,
                                             .y_origin = variant / 8,
                                             .output_max = kOutputMax};
        processor.transform(frame, settings, planes);
        for (int pixel = 0; pixel < width * height; ++pixel) {
          const int row = pixel / width;
          const int column = pixel % width;
          // Where just one side is odd, the library gives the last pixel other weights.
          if (pixel == width * height - 1 && width % 2 != height % 2) continue;
          const auto index = static_cast<std::size_t>(pixel);
          // Every fourth column of the vector area may repeat its left neighbour.
          ASSERT_TRUE(is_close(planes, index, expected_at(frame, settings, row, column)) ||
                      (column % 4 == 3 &&
                       is_close(planes, index, expected_at(frame, settings, row, column - 1))))
              << width << " x " << height << ", variant " << variant << ", row " << row
              << ", column " << column;
        }
      }
    }
  }
}

TEST(Processor, FillsWhatIsAskedForWithTheSameBits) {
  const kv::Processor processor;
  for (const int width : {6, 21}) {
    const kv::Frame frame = random_frame(width, 10);
    kv::Planes all;
    kv::Planes some;
    processor.transform(frame, {}, all);
    for (std::size_t number = 1; number < 64; ++number) {
      const auto planes = kv::OutputSet::from_number(number);
      processor.transform(frame, {.planes = planes}, some);
      EXPECT_EQ(some.normalized_stokes, planes.has(kv::Plane::normalized_stokes)
                                            ? all.normalized_stokes
                                            : std::vector<float>());
      for (const kv::PlaneTraits& traits : kv::kPlanes) {
        EXPECT_EQ(some.levels(traits.plane), planes.has(traits.plane)
                                                 ? all.levels(traits.plane)
                                                 : std::vector<std::uint16_t>())
            << traits.name << " of set " << number;
      }
    }
  }
}

TEST(Processor, RefusesWhatTheLibraryCannotDo) {
  using Settings = kv::TransformSettings;
  struct Refusal {
    const char* part_of_message;
    void (*spoil)(kv::Frame&, Settings&);
  };
  const Refusal refusals[] = {
      {"1 x 6 pixels", [](kv::Frame& frame, Settings&) { frame = random_frame(1, 6); }},
      {"6 x 1 pixels", [](kv::Frame& frame, Settings&) { frame = random_frame(6, 1); }},
      {"4 or more", [](kv::Frame& frame, Settings&) { frame = random_frame(2, 3); }},
      {"4 or more", [](kv::Frame& frame, Settings&) { frame = random_frame(3, 9); }},
      {"48 samples, but has 47", [](kv::Frame& frame, Settings&) { frame.samples.pop_back(); }},
      {"depth of 17", [](kv::Frame& frame, Settings&) { frame.bit_depth = 17; }},
      {"depth of 0", [](kv::Frame& frame, Settings&) { frame.bit_depth = 0; }},
      {"output maximum", [](kv::Frame&, Settings& settings) { settings.output_max = 0; }},
      {"origin", [](kv::Frame&, Settings& settings) { settings.x_origin = -1; }},
      {"origin", [](kv::Frame&, Settings& settings) { settings.y_origin = -1; }},
      {"phase", [](kv::Frame&, Settings& settings) { settings.phase = 4; }},
      {"phase", [](kv::Frame&, Settings& settings) { settings.phase = -1; }},
      {"plane", [](kv::Frame&, Settings& settings) { settings.planes = {}; }},
  };
  for (const Refusal& refusal : refusals) {
    kv::Frame frame = random_frame(8, 6);
    Settings settings;
    refusal.spoil(frame, settings);
    kv::Planes planes;
    EXPECT_PRED2(contains, error_of([&] { kv::Processor().transform(frame, settings, planes); }),
                 refusal.part_of_message);
    EXPECT_EQ(planes.width, 0);
  }
}

}  // namespace
