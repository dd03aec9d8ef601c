// Where the ratios of the vector area end up. Their stores run on from block to block and know
// nothing of rows, so that from the second row pair on they leave their places.
#include <gtest/gtest.h>

#include <sstream>

#include "kernel_run.h"

namespace kv::test {
namespace {

constexpr PlaneNumber kRatios = 1;

/// Bits of the two ratios of a pixel.
using Ratios = std::array<std::uint32_t, 2>;

Ratios ratios_at(const Planes& planes, std::size_t pixel) {
  Ratios ratios{};
  const auto bytes = planes.normalized_stokes.bytes();
  std::memcpy(ratios.data(),
              bytes.data() + (GuardedPlane<float>::kGuard + 2 * pixel) * sizeof(float),
              sizeof ratios);
  return ratios;
}

class FloatPlane : public BothForms {
 protected:
  /// The ratios of each pixel. In frames of at most one row pair all stand at their places, and
  /// strips of such a height handle their pixels as the whole frame does.
  std::vector<Ratios> ratios_of_pixels(const Frame& frame, std::uint32_t phase) {
    std::vector<Ratios> ratios(frame.height * frame.width);
    for (std::size_t first = 0; first < frame.height; first += 2) {
      const bool last_two = first + 2 == frame.height;
      const bool last_one = first + 1 == frame.height;
      if (last_one) break;
      const std::size_t rows = last_two ? 2 : 3;
      const auto begin = frame.samples.begin() + static_cast<std::ptrdiff_t>(first * frame.width);
      const Frame strip{
          .height = rows,
          .width = frame.width,
          .samples = {begin, begin + static_cast<std::ptrdiff_t>(rows * frame.width)}};
      const Planes planes = run_kernel(strip, phase, processor_, sse41(), kRatios);
      for (std::size_t i = 0; i < rows * frame.width; ++i) {
        ratios[first * frame.width + i] = ratios_at(planes, i);
      }
    }
    return ratios;
  }
};

/// What stands at each pixel at the end: = its own ratios, - nothing, or row and column of the
/// pixel whose ratios these are.
struct Map {
  const char* name;
  std::vector<const char*> rows;
};

const std::vector<Map> kMaps{
    {"8 x 8",
     {"=  =  =  =  20 21 22 23",  //
      "40 41 42 43 30 31 32 33",  //
      "50 51 52 53 =  =  =  = ",  //
      "-  -  -  -  =  =  =  = ",  //
      "-  -  -  -  =  =  =  = ",  //
      "-  -  -  -  =  =  =  = ",  //
      "=  =  =  =  =  =  =  = ",  //
      "=  =  =  =  =  =  =  = "}},
    {"6 x 8",
     {"=  =  =  =  20 21 22 23",  //
      "=  =  =  =  30 31 32 33",  //
      "-  -  -  -  =  =  =  = ",  //
      "-  -  -  -  =  =  =  = ",  //
      "=  =  =  =  =  =  =  = ",  //
      "=  =  =  =  =  =  =  = "}},
    {"6 x 12",
     {"=  =  =  =  =  =  =  =  20 21 22 23",  //
      "24 25 26 27 =  =  =  =  30 31 32 33",  //
      "34 35 36 37 -  -  -  -  =  =  =  = ",  //
      "-  -  -  -  -  -  -  -  =  =  =  = ",  //
      "=  =  =  =  =  =  =  =  =  =  =  = ",  //
      "=  =  =  =  =  =  =  =  =  =  =  = "}},
    {"5 x 9",
     {"=  =  =  =  20 21 22 23 =",  //
      "=  =  =  =  30 31 32 33 =",  //
      "-  -  -  -  =  =  =  =  =",  //
      "-  -  -  -  =  =  =  =  =",  //
      "=  =  =  =  =  =  =  =  ="}},
    {"4 x 8, one row pair",
     {"=  =  =  =  =  =  =  = ",  //
      "=  =  =  =  =  =  =  = ",  //
      "=  =  =  =  =  =  =  = ",  //
      "=  =  =  =  =  =  =  = "}},
};

std::vector<std::string> cells_of(const Map& map) {
  std::vector<std::string> cells;
  for (const char* const row : map.rows) {
    std::istringstream in(row);
    for (std::string cell; in >> cell;) cells.push_back(cell);
  }
  return cells;
}

TEST_P(FloatPlane, HoldsTheRatiosOfTheMappedPixels) {
  for (const Map& map : kMaps) {
    const std::vector<std::string> cells = cells_of(map);
    const std::size_t height = map.rows.size();
    const std::size_t width = cells.size() / height;
    const Frame frame{.height = height, .width = width, .samples = noise(height * width, 13)};
    for (std::uint32_t phase = 0; phase < 4; ++phase) {
      const std::vector<Ratios> own = ratios_of_pixels(frame, phase);
      const Ratios nothing = ratios_at(Planes(1), 0);
      for (const PlaneNumber wanted : {kRatios, kAllPlanes}) {
        const Planes planes = run_kernel(frame, phase, processor_, sse41(), wanted);
        for (std::size_t i = 0; i < cells.size(); ++i) {
          const std::string& cell = cells[i];
          const auto digit = [&](std::size_t at) {
            return static_cast<std::size_t>(cell[at] - '0');
          };
          const Ratios expected = cell == "-"   ? nothing
                                  : cell == "=" ? own[i]
                                                : own[digit(0) * width + digit(1)];
          EXPECT_EQ(ratios_at(planes, i), expected)
              << map.name << ", phase " << phase << ", row " << i / width << ", column "
              << i % width << ": should be " << cell;
        }
      }
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Forms, FloatPlane, testing::Bool(), form_name);

}  // namespace
}  // namespace kv::test
