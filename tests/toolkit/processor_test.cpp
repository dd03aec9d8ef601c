// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "kv/polarization/processor.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cmath>
#include <cstring>
#include <numbers>
#include <random>
#include <span>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "error_of.h"

using namespace kv::polarization;

namespace {

// The mosaic that begins with each phase: top left, top right, bottom left, bottom right.
constexpr int kMosaics[4][4] = {
    {0, 135, 45, 90}, {45, 90, 0, 135}, {90, 45, 135, 0}, {135, 0, 90, 45}};

constexpr int kOutputMax = 4095;

Frame random_frame(unsigned width, unsigned height) {
  Frame frame = make_frame(width, height, 12);
  std::mt19937 random(width * 1000 + height);
  for (auto& sample : frame.samples) sample = static_cast<std::uint16_t>(random() % 2047 + 1);
  return frame;
}

/// What the planes hold of a pixel, in the order of kPlanes.
using PixelValues = std::array<double, 7>;

/// From the samples that the pixel's 2x2 neighbourhood has behind each polarizer; mirrored at the
/// right and bottom edges.
PixelValues expected_at(const Frame& frame, const Mosaic& settings, int row, int column) {
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
bool is_close(const Planes& planes, std::size_t index, const PixelValues& expected) {
  constexpr PixelValues kTolerances = {0.001, 0.001, 2, 0.5, 0.5, 5, 4};
  for (std::size_t i = 0; i < expected.size(); ++i) {
    const double actual = i < 2 ? planes.normalized_stokes()[2 * index + i]
                                : planes.levels(kPlanes[i - 1].plane)[index];
    // -90 and +90 degrees, the ends of the azimuth plane, are one orientation.
    const double error = std::remainder(actual - expected[i], i == 5 ? kOutputMax : 1e9);
    if (!(std::abs(error) <= kTolerances[i])) return false;
  }
  return true;
}

void expect_planes(const Planes& planes, const Frame& frame, const Mosaic& settings) {
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
  Processor processor;
  Planes all;
  Planes some;
  for (const unsigned width : {2u, 3u, 4u, 5u, 7u, 8u, 9u, 12u, 21u, 22u}) {
    for (const unsigned height : {2u, 3u, 4u, 5u, 6u, 7u, 10u, 11u}) {
      if (width < 4 && height > 2) continue;
      const Frame frame = random_frame(width, height);
      for (int number = 1; number < 64; ++number) {
        SCOPED_TRACE(testing::Message() << width << " x " << height << ", number " << number);
        const Mosaic mosaic{number % 4, number / 4 % 2, number / 8 % 2};
        all.reshape(frame.width, frame.height, OutputSet::all(), kOutputMax);
        processor.transform(frame, mosaic, all.views());
        expect_planes(all, frame, mosaic);
        const auto wanted = OutputSet::from_number(static_cast<std::size_t>(number));
        some.reshape(frame.width, frame.height, wanted, kOutputMax);
        processor.transform(frame, mosaic, some.views());
        for (const PlaneTraits& traits : kPlanes) {
          if (!wanted.has(traits.plane)) continue;
          if (traits.element == PlaneElement::float_pair) {
            EXPECT_TRUE(std::ranges::equal(some.normalized_stokes(), all.normalized_stokes()));
          } else {
            EXPECT_TRUE(std::ranges::equal(some.levels(traits.plane), all.levels(traits.plane)))
                << traits.name;
          }
        }
      }
    }
  }
}

struct Request {
  Frame frame = random_frame(8, 6);
  FrameView view = frame;
  Mosaic mosaic{};
  Buffer<float> pairs = Buffer<float>(96);
  Buffer<std::uint16_t> levels = Buffer<std::uint16_t>(96);
  PlaneViews planes{.normalized_stokes = pairs,
                    .intensity = {std::span(levels).first(48)},
                    .dolp = {std::span(levels).last(48)}};
};

/// The bytes of all planes, whose pairs may be NaN.
std::string bytes_of(const Planes& planes) {
  std::string bytes;
  const auto add = [&bytes](auto values) {
    bytes.append(reinterpret_cast<const char*>(values.data()), values.size_bytes());
  };
  add(planes.normalized_stokes());
  for (const PlaneTraits& traits : kPlanes) add(planes.levels(traits.plane));
  return bytes;
}

// Widths with and without a packed rest of each size; heights that end in one and in two last rows,
// as one strip, at the boundary of strips, and in several bands of pairs.
TEST(Processor, ThreadsAndModesGiveTheBytesOfSingleCalls) {
  Processor alone;
  Processor threads(3);
  Weights weights = alone.weights();
  weights.behind_0[0] = 1.5F;
  weights.behind_45[5] = -2.0F;
  weights.behind_90[10] = 0.25F;
  weights.behind_135[4] = 3.0F;
  for (const auto& [width, height] :
       {std::pair{640u, 401u}, {517u, 402u}, {518u, 640u}, {519u, 641u}, {8u, 30000u}}) {
    const Mosaic mosaic{static_cast<int>(height) % 4, 1, static_cast<int>(width) % 2};
    const Frame frame = random_frame(width, height);
    SCOPED_TRACE(testing::Message() << width << " x " << height);
    Planes one, many, strips;
    for (Planes* planes : {&one, &many, &strips}) {
      planes->reshape(frame.width, frame.height, OutputSet::all(), kOutputMax);
    }
    alone.transform(frame, mosaic, one.views());
    threads.transform(frame, mosaic, many.views());
    EXPECT_TRUE(bytes_of(one) == bytes_of(many));

    alone.set_weights(weights);
    threads.set_weights(weights);
    alone.transform(frame, mosaic, one.views(), WeightReach::every_pixel);
    threads.transform(frame, mosaic, many.views(), WeightReach::every_pixel);
    EXPECT_TRUE(bytes_of(one) == bytes_of(many));
    // Two rows at a time have no vector area, but an odd width misleads the last pixel.
    const bool is_odd = frame.height % 2 != 0;
    for (int row = 0; row < frame.height; row += row + 3 == frame.height && is_odd ? 1 : 2) {
      const FrameView two = frame_view(
          std::span(frame.samples).subspan(pixel_count(frame.width, row)), frame.width, 2, 12);
      const PlaneViews all = strips.views();
      const auto at = [&](std::span<std::uint16_t> plane) {
        return LevelView{plane.subspan(pixel_count(frame.width, row), pixel_count(frame.width, 2)),
                         kOutputMax};
      };
      alone.transform(two, {mosaic.phase, 1, mosaic.y_origin + row},
                      {.normalized_stokes = all.normalized_stokes.subspan(
                           2 * pixel_count(frame.width, row), 4 * width),
                       .intensity = at(all.intensity.levels),
                       .stokes_s1 = at(all.stokes_s1.levels),
                       .stokes_s2 = at(all.stokes_s2.levels),
                       .azimuth = at(all.azimuth.levels),
                       .dolp = at(all.dolp.levels)});
    }
    for (int row = 0; row < frame.height; ++row) {
      const std::size_t begin = pixel_count(frame.width, row);
      for (const PlaneTraits& traits : kPlanes) {
        if (traits.element == PlaneElement::float_pair) continue;
        EXPECT_TRUE(std::equal(&strips.levels(traits.plane)[begin],
                               &strips.levels(traits.plane)[begin + width - width % 2],
                               &one.levels(traits.plane)[begin]))
            << traits.name << ", row " << row;
      }
    }
    alone.reset_weights();
    threads.reset_weights();
    EXPECT_EQ(alone.weights(), Processor().weights());
  }
}

// The last pixel of a frame that is odd in width alone, with the default weights, is the one that
// the library gives other weights.
TEST(Processor, WeightsReachTheLastColumnOfAnOddWidth) {
  const Frame frame = random_frame(9, 7);
  Planes planes;
  planes.reshape(9, 7, OutputSet::all(), kOutputMax);
  for (PolarPhase phase = 0; phase < 4; ++phase) {
    const Mosaic mosaic{phase, 0, 0};
    Processor().transform(frame, mosaic, planes.views(), WeightReach::every_pixel);
    for (int row = 0; row < 7; ++row) {
      Frame pair = make_frame(9, 2, 12);  // the two rows that a pixel is made of
      const int first = row < 5 ? row / 2 * 2 : 5;
      std::copy_n(frame.samples.data() + 9 * first, 18, pair.samples.data());
      for (int column = 0; column < 9; ++column) {
        EXPECT_TRUE(is_close(planes, static_cast<std::size_t>(9 * row + column),
                             expected_at(pair, {phase, 0, first}, row - first, column)))
            << row << ", " << column;
      }
    }
  }
}

TEST(Processor, TakesFramesAsTheyLie) {
  const Frame frame = random_frame(9, 6);
  Planes expected, planes;
  for (Planes* each : {&expected, &planes}) {
    each->reshape(9, 6, OutputSet(Plane::intensity, Plane::azimuth), 4095);
  }
  Processor processor;
  processor.transform(frame, {}, expected.views());
  std::vector<std::uint8_t> bytes(6 * 30 + 1);
  for (std::size_t i = 0; i < 54; ++i) {  // left-aligned, with gaps, at an odd address
    const auto sample = static_cast<std::uint16_t>(frame.samples[i] << 4);
    std::memcpy(&bytes[1 + i / 9 * 30 + i % 9 * 2], &sample, 2);
  }
  processor.transform({.bytes = std::as_bytes(std::span(bytes)).subspan(1),
                       .width = 9,
                       .height = 6,
                       .row_pitch = 30,
                       .bit_depth = 12,
                       .alignment = SampleAlignment::left},
                      {}, planes.views());
  EXPECT_TRUE(bytes_of(planes) == bytes_of(expected));

  Frame eight = frame;
  eight.bit_depth = 8;
  std::vector<std::uint8_t> samples(54);
  for (std::size_t i = 0; i < 54; ++i) {
    eight.samples[i] >>= 4;
    samples[i] = static_cast<std::uint8_t>(eight.samples[i]);
  }
  processor.transform(eight, {}, expected.views());
  processor.transform(frame_view(samples, 9, 6), {}, planes.views());
  EXPECT_TRUE(bytes_of(planes) == bytes_of(expected));

  // Each plane has its own full scale.
  PlaneViews views = planes.views();
  views.azimuth.output_max = 180;
  processor.transform(eight, {}, views);
  EXPECT_TRUE(
      std::ranges::equal(planes.levels(Plane::intensity), expected.levels(Plane::intensity)));
  for (std::size_t i = 0; i < 54; ++i) {
    EXPECT_NEAR(planes.levels(Plane::azimuth)[i], expected.levels(Plane::azimuth)[i] / 22.75, 0.51);
  }
}

// Memory that must not be written is no plane: the compiler refuses it.
static_assert(!std::is_convertible_v<std::span<const std::uint16_t>, decltype(LevelView::levels)>);
static_assert(
    !std::is_convertible_v<const Buffer<float>&, decltype(PlaneViews::normalized_stokes)>);

TEST(Processor, CanBeMovedAndSaysWhenItWas) {
  const Frame frame = random_frame(8, 6);
  Planes planes;
  planes.reshape(8, 6, OutputSet::all());
  Processor first(2);
  Processor second = std::move(first);
  second.transform(frame, {}, planes.views());
  EXPECT_PRED2(contains, error_of([&] { first.transform(frame, {}, planes.views()); }),
               "moved from");
  first = std::move(second);
  first.transform(frame, {}, planes.views());
  EXPECT_PRED2(contains, error_of([] { Processor(-1); }), "-1 threads");
}

TEST(ForEachFrame, WorksSideBySideAndStopsAtTheFirstFault) {
  std::vector<std::atomic<int>> calls(100);
  Weights weights = Processor().weights();
  weights.behind_0[0] = 7;
  for_each_frame(
      calls.size(),
      [&](Processor& processor, std::size_t index) {
        EXPECT_EQ(processor.weights(), weights);
        ++calls[index];
      },
      3, weights);
  for (const auto& count : calls) EXPECT_EQ(count, 1);

  std::atomic<int> begun = 0;
  const auto fail = [&](Processor&, std::size_t) {
    ++begun;
    throw Fault(FaultKind::file, "frame is missing");
  };
  EXPECT_EQ(error_of([&] { for_each_frame(1000, fail, 3); }), "frame is missing");
  EXPECT_LE(begun, 3);
  for_each_frame(0, fail);
}

TEST(Processor, RefusesWhatTheLibraryCannotDo) {
  using Spoil = void (*)(Request&);
  const std::pair<const char*, Spoil> refusals[] = {
      {"1 x 6 pixels", [](Request& all) { all.view.width = 1; }},
      {"8 x 1 pixels", [](Request& all) { all.view.height = 1; }},
      {"4 or more", [](Request& all) { all.view.width = 3; }},
      {"larger than any sensor", [](Request& all) { all.view.height = 1 << 26; }},
      {"cannot be", [](Request& all) { all.view.width = -8; }},
      {"needs 96 bytes, but its memory has 95",
       [](Request& all) { all.view.bytes = all.view.bytes.first(95); }},
      {"needs 101 bytes", [](Request& all) { all.view.row_pitch = 17; }},
      {"pitch of 15", [](Request& all) { all.view.row_pitch = 15; }},
      {"pitch of -16", [](Request& all) { all.view.row_pitch = -16; }},
      {"depth of 17", [](Request& all) { all.view.bit_depth = 17; }},
      {"depth of 0", [](Request& all) { all.view.bit_depth = 0; }},
      {"depth of 12 does not fit samples of 8 bits",
       [](Request& all) { all.view.type = SampleType::uint8; }},
      {"output maximum of dolp", [](Request& all) { all.planes.dolp.output_max = 0; }},
      {"origin", [](Request& all) { all.mosaic.x_origin = -1; }},
      {"origin", [](Request& all) { all.mosaic.y_origin = -1; }},
      {"phase", [](Request& all) { all.mosaic.phase = 4; }},
      {"phase", [](Request& all) { all.mosaic.phase = -1; }},
      {"no plane", [](Request& all) { all.planes = {}; }},
      {"normalized_stokes has room for 95 elements; this frame fills 96",
       [](Request& all) { all.planes.normalized_stokes = std::span(all.pairs).first(95); }},
      {"intensity has room for 47",
       [](Request& all) {
         all.planes.intensity.levels = {all.levels.data(), 47};
       }},
      {"dolp overlaps that of intensity",
       [](Request& all) {
         all.planes.dolp.levels = {all.levels.data() + 47, 48};
       }},
      {"azimuth overlaps that of the frame",
       [](Request& all) {
         all.planes.azimuth.levels = {all.frame.samples.data(), 48};
       }},
  };
  for (const auto& [part_of_message, spoil] : refusals) {
    Request request;
    std::fill(request.levels.begin(), request.levels.end(), std::uint16_t{7});
    spoil(request);
    EXPECT_PRED2(contains, error_of([&] {
                   Processor().transform(request.view, request.mosaic, request.planes);
                 }),
                 part_of_message);
    EXPECT_EQ(std::count(request.levels.begin(), request.levels.end(), 7), 96);
  }
}

}  // namespace
