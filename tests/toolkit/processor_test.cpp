#include "toolkit/processor.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <string>

#include "toolkit/error.h"
#include "toolkit/scene/mosaic_camera.h"

namespace {

kv::Frame random_frame(int width, int height) {
  kv::Frame frame =
      kv::make_frame(static_cast<std::uint64_t>(width), static_cast<std::uint64_t>(height), 12);
  std::mt19937 random(static_cast<unsigned>(width * 1000 + height));
  for (auto& sample : frame.samples) sample = static_cast<std::uint16_t>(random() % 4095 + 1);
  return frame;
}

/// The Stokes values of a pixel from the samples that stand for the four polarizers around it,
/// found by their angles rather than by weights.
kv::Stokes stokes_by_angle(const kv::Frame& frame, const kv::TransformSettings& settings, int row,
                           int column) {
  const auto cell = kv::polarizer_angles(settings.phase);
  const int other_row = row + 1 < frame.height ? row + 1 : row - 1;
  const int other_column = column + 1 < frame.width ? column + 1 : column - 1;
  kv::Stokes stokes;
  for (const int r : {row, other_row}) {
    for (const int c : {column, other_column}) {
      const double sample = frame.samples[static_cast<std::size_t>(r * frame.width + c)];
      const int place = 2 * ((r + settings.y_origin) % 2) + (c + settings.x_origin) % 2;
      stokes.s0 += sample / 2;
      switch (cell[static_cast<std::size_t>(place)]) {
        case 0:
          stokes.s1 += sample;
          break;
        case 90:
          stokes.s1 -= sample;
          break;
        case 45:
          stokes.s2 += sample;
          break;
        default:
          stokes.s2 -= sample;
      }
    }
  }
  return stokes;
}

bool is_close(double actual, double expected) {
  return std::abs(actual - expected) <= 0.001 * std::max(std::abs(expected), 0.001);
}

struct Place {
  int row;
  int column;
};

bool pair_is(const kv::Planes& planes, Place place, const kv::Stokes& expected) {
  const auto index = static_cast<std::size_t>(place.row * planes.width + place.column);
  return is_close(planes.normalized_stokes[2 * index], expected.s1 / expected.s0) &&
         is_close(planes.normalized_stokes[2 * index + 1], expected.s2 / expected.s0);
}

bool s1_is(const kv::Planes& planes, Place place, const kv::Stokes& expected) {
  const auto index = static_cast<std::size_t>(place.row * planes.width + place.column);
  return planes.levels(kv::Plane::stokes_s1)[index] == std::max(expected.s1, 0.0);
}

/// Every fourth column of the library's vector area may repeat its left neighbour.
template <class Holds>
bool holds_here_or_left(const kv::Frame& frame, const kv::TransformSettings& settings, Place place,
                        Holds holds) {
  return holds(stokes_by_angle(frame, settings, place.row, place.column)) ||
         (place.column % 4 == 3 &&
          holds(stokes_by_angle(frame, settings, place.row, place.column - 1)));
}

// 2 is the least side, 4 the least width of taller frames, 8 the least width with vector blocks,
// 5 the least height at which the library's float plane is displaced; both parities of each.
TEST(Processor, EveryPixelIsThatOfItsPlace) {
  const kv::Processor processor;
  kv::Planes planes;
  for (const int width : {2, 3, 4, 5, 7, 8, 9, 12, 21, 22}) {
    for (const int height : {2, 3, 4, 5, 6, 7, 10, 11}) {
      if (width < 4 && height > 2) continue;
      const kv::Frame frame = random_frame(width, height);
      for (int variant = 0; variant < 16; ++variant) {
        kv::TransformSettings settings;
        settings.phase = variant % 4;
        settings.x_origin = variant / 4 % 2;
        settings.y_origin = variant / 8;
        settings.output_max = 4095;
        processor.transform(frame, settings, planes);
        for (Place at{0, 0}; at.row < height; ++at.row) {
          for (at.column = 0; at.column < width; ++at.column) {
            // Where just one side is odd, the library gives the last pixel other weights.
            const bool last = at.row == height - 1 && at.column == width - 1;
            if (last && width % 2 != height % 2) continue;
            ASSERT_TRUE(holds_here_or_left(frame, settings, at,
                                           [&](const kv::Stokes& expected) {
                                             return pair_is(planes, at, expected) &&
                                                    s1_is(planes, at, expected);
                                           }))
                << width << " x " << height << ", phase " << settings.phase << ", origin "
                << settings.x_origin << "," << settings.y_origin << ", row " << at.row
                << ", column " << at.column;
          }
        }
      }
    }
  }
}

TEST(Processor, ComputesOnlyWhatIsAskedForAndAlwaysTheSame) {
  const kv::Processor processor;
  const kv::Frame frame = random_frame(21, 10);
  kv::TransformSettings settings;
  kv::Planes all;
  processor.transform(frame, settings, all);
  kv::Planes one;
  for (std::size_t i = 0; i < kv::kPlanes.size(); ++i) {
    const auto plane = static_cast<kv::Plane>(i);
    settings.planes = kv::OutputSet(plane);
    processor.transform(frame, settings, one);
    EXPECT_EQ(one.normalized_stokes.empty(), plane != kv::Plane::normalized_stokes);
    EXPECT_EQ(one.levels(kv::Plane::dolp).empty(), plane != kv::Plane::dolp);
    if (plane == kv::Plane::normalized_stokes) {
      EXPECT_EQ(one.normalized_stokes, all.normalized_stokes);
    } else {
      EXPECT_EQ(one.levels(plane), all.levels(plane)) << kv::traits_of(plane).name;
    }
  }
}

struct Refusal {
  const char* name;
  const char* part_of_message;
  void (*spoil)(kv::Frame&, kv::TransformSettings&);
};

void PrintTo(const Refusal& refusal, std::ostream* out) { *out << refusal.part_of_message; }

std::string name_of_refusal(const testing::TestParamInfo<Refusal>& info) { return info.param.name; }

class RefusalTest : public testing::TestWithParam<Refusal> {};

TEST_P(RefusalTest, NamesTheFaultBeforeTheLibraryIsCalled) {
  kv::Frame frame = random_frame(8, 6);
  kv::TransformSettings settings;
  GetParam().spoil(frame, settings);
  kv::Planes planes;
  try {
    kv::Processor().transform(frame, settings, planes);
    FAIL() << "accepted";
  } catch (const kv::Error& error) {
    EXPECT_NE(std::string(error.what()).find(GetParam().part_of_message), std::string::npos)
        << error.what();
  }
  EXPECT_TRUE(planes.levels(kv::Plane::intensity).empty());
}

INSTANTIATE_TEST_SUITE_P(
    All, RefusalTest,
    testing::Values(
        Refusal{"one_column", "2 or more",
                [](kv::Frame& f, kv::TransformSettings&) { f = random_frame(1, 6); }},
        Refusal{"one_row", "2 or more",
                [](kv::Frame& f, kv::TransformSettings&) { f = random_frame(6, 1); }},
        Refusal{"width_2", "4 or more",
                [](kv::Frame& f, kv::TransformSettings&) { f = random_frame(2, 3); }},
        Refusal{"width_3", "4 or more",
                [](kv::Frame& f, kv::TransformSettings&) { f = random_frame(3, 9); }},
        Refusal{"too_few_samples", "needs 48",
                [](kv::Frame& f, kv::TransformSettings&) { f.samples.pop_back(); }},
        Refusal{"deep", "bit depth",
                [](kv::Frame& f, kv::TransformSettings&) { f.bit_depth = 17; }},
        Refusal{"no_bits", "bit depth",
                [](kv::Frame& f, kv::TransformSettings&) { f.bit_depth = 0; }},
        Refusal{"output_max", "65535",
                [](kv::Frame&, kv::TransformSettings& s) { s.output_max = 0; }},
        Refusal{"origin", "origin", [](kv::Frame&, kv::TransformSettings& s) { s.y_origin = -1; }},
        Refusal{"phase", "phase", [](kv::Frame&, kv::TransformSettings& s) { s.phase = 4; }},
        Refusal{"no_plane", "plane", [](kv::Frame&, kv::TransformSettings& s) { s.planes = {}; }}),
    name_of_refusal);

}  // namespace
