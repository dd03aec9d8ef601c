// Which samples and which weights a pixel takes, by its place in the frame.
#include <gtest/gtest.h>

#include <sstream>

#include "mosaic.h"
#include "public_call.h"

namespace kv::test {
namespace {

struct Size {
  std::size_t height;
  std::size_t width;
};

std::ostream& operator<<(std::ostream& out, const Size& size) {
  return out << "height " << size.height << ", width " << size.width;
}

Arguments arguments_for(std::size_t phase, const Size& size) {
  return {.polar_phase = static_cast<PolarPhase>(phase),
          .width = static_cast<std::int32_t>(size.width),
          .height = static_cast<std::int32_t>(size.height)};
}

/// S0 as the sample in one column of the weights.
Weights sample_of(std::size_t weight_column) {
  Weights weights{};
  weights[weight_column] = 2;
  return weights;
}

TEST(Positions, NeighboursAreMirroredAtTheEdges) {
  const Processor processor;
  // No size here has a vector area, where weights do not count.
  for (const Size& size : std::vector<Size>{{2, 2},
                                            {2, 3},
                                            {2, 21},
                                            {2, 40},
                                            {3, 4},
                                            {3, 5},
                                            {4, 4},
                                            {4, 5},
                                            {5, 6},
                                            {5, 7},
                                            {8, 7}}) {
    std::vector<std::uint16_t> frame(size.height * size.width);
    for (std::size_t i = 0; i < frame.size(); ++i) frame[i] = static_cast<std::uint16_t>(i + 1);

    for (std::size_t role = 0; role < 4; ++role) {
      const Weights weights = sample_of(role);
      ASSERT_EQ(set_weights(processor.handle(), {weights, weights, weights, weights}),
                kv_status_ok);
      const Planes planes = transformed(processor, arguments_for(0, size), frame);

      for (std::size_t row = 0; row < size.height; ++row) {
        for (std::size_t column = 0; column < size.width; ++column) {
          const bool horizontal = role == 1 || role == 3;
          const bool vertical = role == 2 || role == 3;
          const std::size_t beside = column + 1 < size.width ? column + 1 : column - 1;
          const std::size_t below = row + 1 < size.height ? row + 1 : row - 1;
          const std::size_t source =
              (vertical ? below : row) * size.width + (horizontal ? beside : column);
          ASSERT_EQ(planes.intensity[row * size.width + column], frame[source])
              << size << ", weight column " << role << ", pixel " << row << ", " << column;
        }
      }
    }
  }
}

struct EntryMap {
  Size size;
  std::vector<const char*> rows;  ///< Place in the mosaic cell whose weights each pixel takes.
};

const std::vector<EntryMap> kEntryMaps{
    {{2, 2}, {"01", "23"}},
    {{2, 3}, {"010", "230"}},
    {{2, 9}, {"010101010", "232323230"}},
    {{3, 4}, {"0101", "2323", "0100"}},
    {{3, 5}, {"01010", "23232", "01010"}},
    {{4, 4}, {"0101", "2323", "0101", "2323"}},
    {{4, 5}, {"01010", "23232", "01010", "23230"}},
    {{5, 5}, {"01010", "23232", "01010", "23232", "01010"}},
    {{5, 6}, {"010101", "232323", "010101", "232323", "010100"}},
    {{6, 6}, {"010101", "232323", "010101", "232323", "010101", "232323"}},
};

TEST(Positions, EachPixelTakesTheWeightsOfItsPlaceInTheCell) {
  const Processor processor;
  for (const EntryMap& map : kEntryMaps) {
    const std::vector<std::uint16_t> frame(map.size.height * map.size.width, 1);
    for (std::size_t phase = 0; phase < 4; ++phase) {
      // S0 is the number of the place that the polarizer has in this phase.
      std::array<Weights, 4> weights{};
      for (std::size_t place = 0; place < 4; ++place) {
        weights[kMosaics[phase][place]][0] = static_cast<float>(2 * place);
      }
      ASSERT_EQ(set_weights(processor.handle(), weights), kv_status_ok);

      const Planes planes = transformed(processor, arguments_for(phase, map.size), frame);
      for (std::size_t row = 0; row < map.size.height; ++row) {
        std::ostringstream entries;
        for (std::size_t column = 0; column < map.size.width; ++column) {
          entries << planes.intensity[row * map.size.width + column];
        }
        EXPECT_EQ(entries.str(), map.rows[row])
            << map.size << ", phase " << phase << ", row " << row;
      }
    }
  }
}

/// S0 = 900, S1 = 600, S2 = 400.
constexpr std::array<std::uint16_t, 4> kScene{900, 500, 300, 100};

TEST(Positions, OnlyTheLastPixelDepartsFromAUniformScene) {
  struct Case {
    Size size;
    float last_s1;
    float last_s2;
  };
  const std::vector<Case> cases{
      {{2, 2}, 600, 400},
      {{4, 4}, 600, 400},
      {{8, 8}, 600, 400},
      {{6, 12}, 600, 400},
      {{3, 5}, 600, 400},
      {{5, 9}, 600, 400},
      {{7, 13}, 600, 400},
      // Height even, width odd: S1 and S2 exchanged.
      {{2, 3}, 400, 600},
      {{4, 5}, 400, 600},
      {{4, 9}, 400, 600},
      {{6, 11}, 400, 600},
      // Height odd, width even: exchanged and negated.
      {{3, 4}, -400, -600},
      {{5, 6}, -400, -600},
      {{3, 8}, -400, -600},
      {{7, 10}, -400, -600},
  };
  const Processor processor;
  for (const Case& c : cases) {
    for (std::size_t phase = 0; phase < 4; ++phase) {
      SCOPED_TRACE(testing::Message() << c.size << ", phase " << phase);
      const Planes planes = transformed(processor, arguments_for(phase, c.size),
                                        uniform_scene(kScene, phase, c.size.height, c.size.width));
      const std::size_t last = c.size.height * c.size.width - 1;
      for (std::size_t pixel = 0; pixel < last; ++pixel) {
        ASSERT_EQ(planes.stokes_s1[pixel], 600) << "pixel " << pixel;
        ASSERT_EQ(planes.stokes_s2[pixel], 400) << "pixel " << pixel;
      }
      EXPECT_EQ(planes.stokes_s1[last], std::max(c.last_s1, 0.0f));
      EXPECT_EQ(planes.stokes_s2[last], std::max(c.last_s2, 0.0f));
      EXPECT_EQ(planes.normalized_stokes[2 * last], c.last_s1 / 900);
      EXPECT_EQ(planes.normalized_stokes[2 * last + 1], c.last_s2 / 900);
      EXPECT_EQ(planes.intensity[last], 900);
    }
  }
}

}  // namespace
}  // namespace kv::test
