// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

// Where the ratios of the vector area end up. Their stores run on from block to block and know
// nothing of rows, so that from the second row pair on they leave their places.
#include <gtest/gtest.h>

#include <sstream>

#include "every_path.h"
#include "mosaic.h"

namespace kv::test {
namespace {

using FloatPlane = EveryPath;
using Ratios = std::array<float, 2>;

/// Of the sizes below, none of whose last pixels has the weights of another place.
Ratios ratios_of(const Frame& frame, std::size_t phase, std::size_t row, std::size_t column,
                 bool sse41) {
  if (sse41 && column % 4 == 3 && in_vector_area(frame, row, column)) --column;
  std::array<float, 4> behind{};  // The polarizers of 0, 45, 90 and 135 degrees.
  for (const std::size_t r : {row, row + 1 < frame.height ? row + 1 : row - 1}) {
    for (const std::size_t c : {column, column + 1 < frame.width ? column + 1 : column - 1}) {
      behind[kMosaics[phase][cell_position(r, c)]] = frame.samples[r * frame.width + c];
    }
  }
  const float s0 = (behind[0] + behind[1] + behind[2] + behind[3]) / 2;
  return {(behind[0] - behind[2]) / s0, (behind[1] - behind[3]) / s0};
}

/// What stands at each pixel at the end: = its own ratios, - nothing, or row and column of the
/// pixel whose ratios these are.
using Map = std::vector<const char*>;

const std::vector<Map> kMaps{{"=  =  =  =  20 21 22 23",  //
                              "40 41 42 43 30 31 32 33",  //
                              "50 51 52 53 =  =  =  = ",  //
                              "-  -  -  -  =  =  =  = ",  //
                              "-  -  -  -  =  =  =  = ",  //
                              "-  -  -  -  =  =  =  = ",  //
                              "=  =  =  =  =  =  =  = ",  //
                              "=  =  =  =  =  =  =  = "},
                             {"=  =  =  =  =  =  =  =  20 21 22 23",  //
                              "24 25 26 27 =  =  =  =  30 31 32 33",  //
                              "34 35 36 37 -  -  -  -  =  =  =  = ",  //
                              "-  -  -  -  -  -  -  -  =  =  =  = ",  //
                              "=  =  =  =  =  =  =  =  =  =  =  = ",  //
                              "=  =  =  =  =  =  =  =  =  =  =  = "},
                             {"=  =  =  =  20 21 22 23 =",  //
                              "=  =  =  =  30 31 32 33 =",  //
                              "-  -  -  -  =  =  =  =  =",  //
                              "-  -  -  -  =  =  =  =  =",  //
                              "=  =  =  =  =  =  =  =  ="},
                             {"=  =  =  =  =  =  =  = ",  //
                              "=  =  =  =  =  =  =  = ",  //
                              "=  =  =  =  =  =  =  = ",  //
                              "=  =  =  =  =  =  =  = "}};

TEST_P(FloatPlane, HoldsTheRatiosOfTheMappedPixels) {
  // That the blocks' S0 is a little smaller is told by another test.
  constexpr float tolerance = 1e-3f;
  for (const Map& map : kMaps) {
    std::vector<std::string> cells;
    for (const char* const row : map) {
      std::istringstream in(row);
      for (std::string cell; in >> cell;) cells.push_back(cell);
    }
    const std::size_t width = cells.size() / map.size();
    const Frame frame{.height = map.size(), .width = width, .samples = noise(cells.size(), 13)};
    const Ratios nothing = Planes(1).ratios(0);
    for (std::uint32_t phase = 0; phase < kMosaics.size(); ++phase) {
      const Planes planes = run(frame, phase, OutputSet(Plane::normalized_stokes));
      for (std::size_t pixel = 0; pixel < cells.size(); ++pixel) {
        const std::string& cell = cells[pixel];
        const auto digit = [&](std::size_t at) { return static_cast<std::size_t>(cell[at] - '0'); };
        const Ratios expected = cell == "-" ? nothing
                                : cell == "="
                                    ? ratios_of(frame, phase, pixel / width, pixel % width, sse41())
                                    : ratios_of(frame, phase, digit(0), digit(1), sse41());
        const Ratios found = planes.ratios(pixel);
        EXPECT_NEAR(found[0], expected[0], tolerance)
            << map.size() << " rows, phase " << phase << ", pixel " << pixel << ": " << cell;
        EXPECT_NEAR(found[1], expected[1], tolerance)
            << map.size() << " rows, phase " << phase << ", pixel " << pixel << ": " << cell;
      }
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Paths, FloatPlane, testing::ValuesIn(kPaths), path_name);

}  // namespace
}  // namespace kv::test
