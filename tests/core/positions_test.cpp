// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

// Which samples and which weights a pixel takes, by its place in the frame.
#include <gtest/gtest.h>

#include <algorithm>

#include "mosaic.h"
#include "public_call.h"

namespace kv::test {
namespace {

/// Samples or levels of a frame, a character each: from 0 on in the order of the character set.
using Map = std::vector<std::string>;

Arguments arguments_for(int phase, std::size_t height, std::size_t width) {
  return {.polar_phase = phase,
          .width = static_cast<std::int32_t>(width),
          .height = static_cast<std::int32_t>(height)};
}

Map intensity_of(const Processor& processor, int phase, const Map& map) {
  std::vector<std::uint16_t> frame;
  for (const std::string& row : map) {
    for (const char c : row) frame.push_back(static_cast<std::uint16_t>(c - '0'));
  }
  const Planes planes =
      transformed(processor, arguments_for(phase, map.size(), map[0].size()), frame);
  Map levels = map;
  std::size_t pixel = 0;
  for (std::string& row : levels) {
    for (char& c : row) c = static_cast<char>('0' + planes.level(Plane::intensity, pixel++));
  }
  return levels;
}

TEST(Positions, NeighboursAreMirroredAtTheEdges) {
  const Map frame{"abcde", "fghij", "klmno"};
  const std::vector<Map> by_weight_column{
      frame, {"bcded", "ghiji", "lmnon"}, {"fghij", "klmno", "fghij"}, {"ghiji", "lmnon", "ghiji"}};
  const Processor processor;
  for (std::size_t column = 0; column < by_weight_column.size(); ++column) {
    Weights weights{};
    weights[column] = 2;  // S0 is the sample of that neighbour.
    ASSERT_EQ(set_weights(processor.handle(), {weights, weights, weights, weights}), kv_status_ok);
    EXPECT_EQ(intensity_of(processor, 0, frame), by_weight_column[column])
        << "weight column " << column;
  }
}

TEST(Positions, EachPixelTakesTheWeightsOfItsPlaceInTheCell) {
  const Processor processor;
  for (const Map& map : std::vector<Map>{{"01", "23"},
                                         {"010101010", "232323230"},
                                         {"0101", "2323", "0100"},
                                         {"01010", "23232", "01010"},
                                         {"0101", "2323", "0101", "2323"},
                                         {"01010", "23232", "01010", "23230"}}) {
    for (std::size_t phase = 0; phase < 4; ++phase) {
      // S0 is the number of the place that the polarizer has in this phase.
      std::array<Weights, 4> weights{};
      for (std::size_t place = 0; place < 4; ++place) {
        weights[kMosaics[phase][place]][0] = static_cast<float>(2 * place);
      }
      ASSERT_EQ(set_weights(processor.handle(), weights), kv_status_ok);
      const Map ones(map.size(), std::string(map[0].size(), '1'));
      EXPECT_EQ(intensity_of(processor, static_cast<int>(phase), ones), map) << "phase " << phase;
    }
  }
}

TEST(Positions, OnlyTheLastPixelDepartsFromAUniformScene) {
  constexpr std::array<std::uint16_t, 4> scene{900, 500, 300, 100};
  struct Case {
    std::size_t height, width;
    int last_s1, last_s2;
  };
  const Processor processor;
  for (const Case& c : std::vector<Case>{{6, 12, 600, 400},
                                         {7, 13, 600, 400},
                                         {4, 9, 400, 600},        // S1 and S2 exchanged.
                                         {7, 10, -400, -600}}) {  // Exchanged and negated.
    for (const int phase : {-1, 0, 1, 2, 3}) {                    // A negative one acts as 0.
      SCOPED_TRACE(testing::Message() << c.height << " x " << c.width << ", phase " << phase);
      const Planes planes = transformed(
          processor, arguments_for(phase, c.height, c.width),
          uniform_scene(scene, static_cast<std::size_t>(std::max(phase, 0)), c.height, c.width));
      const std::size_t last = c.height * c.width - 1;
      for (std::size_t pixel = 0; pixel <= last; ++pixel) {
        const int s1 = pixel == last ? c.last_s1 : 600, s2 = pixel == last ? c.last_s2 : 400;
        ASSERT_EQ(planes.level(Plane::stokes_s1, pixel), std::max(s1, 0)) << "pixel " << pixel;
        ASSERT_EQ(planes.level(Plane::stokes_s2, pixel), std::max(s2, 0)) << "pixel " << pixel;
      }
      const auto [s1_ratio, s2_ratio] = planes.ratios(last);
      EXPECT_EQ(s1_ratio, static_cast<float>(c.last_s1) / 900);
      EXPECT_EQ(s2_ratio, static_cast<float>(c.last_s2) / 900);
    }
  }
}

}  // namespace
}  // namespace kv::test
