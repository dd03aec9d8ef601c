// A frame that starts elsewhere on the sensor sees the mosaic shifted.
#include <gtest/gtest.h>

#include <limits>

#include "mosaic.h"
#include "public_call.h"

namespace kv::test {
namespace {

using Rotation = std::array<std::size_t, 4>;
constexpr Rotation kNone{0, 1, 2, 3};
constexpr Rotation kRow{1, 0, 3, 2};
constexpr Rotation kColumn{3, 2, 1, 0};
constexpr Rotation kDiagonal{2, 3, 0, 1};

constexpr std::int32_t kLowest = std::numeric_limits<std::int32_t>::min();
constexpr std::int32_t kHighest = std::numeric_limits<std::int32_t>::max();

struct Origin {
  std::int32_t x;
  std::int32_t y;
  Rotation rotation;  ///< Phase of the frame by phase of the sensor.
};

const std::vector<Origin> kOrigins{
    {0, 0, kNone},
    {2, 4, kNone},
    {-2, -4, kNone},
    {kHighest - 1, kLowest, kNone},
    {0, 1, kRow},
    {-2, 3, kRow},
    {kLowest, kHighest, kRow},
    {1, 0, kColumn},
    {3, -2, kColumn},
    {kHighest, 6, kColumn},
    {1, 1, kDiagonal},
    {3, kHighest, kDiagonal},
    {-1, 0, kDiagonal},
    {-1, 2, kDiagonal},
    {0, -1, kDiagonal},
    {-2, -3, kDiagonal},
    {-1, -1, kDiagonal},
    {-1, 1, kDiagonal},
    {1, -1, kDiagonal},
    {kLowest + 1, 1, kDiagonal},
};

/// I0 - I90 = 600 and I45 - I135 = 400, so that any other mosaic gives other planes.
constexpr std::array<std::uint16_t, 4> kScene{900, 500, 300, 100};

/// Width and height 4: every parity class would do, this one has no special last pixel.
void expect_frame_phase(const Processor& processor, Arguments arguments, std::size_t frame_phase) {
  arguments.width = arguments.height = 4;
  const Planes planes = transformed(processor, arguments, uniform_scene(kScene, frame_phase, 4, 4));
  for (std::size_t pixel = 0; pixel < 16; ++pixel) {
    ASSERT_EQ(planes.stokes_s1[pixel], 600);
    ASSERT_EQ(planes.stokes_s2[pixel], 400);
  }
}

TEST(Origins, ShiftTheMosaic) {
  const Processor processor;
  for (const Origin& origin : kOrigins) {
    for (PolarPhase phase = 0; phase < 4; ++phase) {
      SCOPED_TRACE(testing::Message()
                   << "origin " << origin.x << ", " << origin.y << ", phase " << phase);
      expect_frame_phase(processor,
                         {.polar_phase = phase, .x_origin = origin.x, .y_origin = origin.y},
                         origin.rotation[static_cast<std::size_t>(phase)]);
    }
  }
}

TEST(Origins, NegativePhasesActAsPhaseZero) {
  const Processor processor;
  for (const Origin& origin : kOrigins) {
    for (const PolarPhase phase : {-1, -2, -3, -4, kLowest}) {
      SCOPED_TRACE(testing::Message()
                   << "origin " << origin.x << ", " << origin.y << ", phase " << phase);
      expect_frame_phase(processor,
                         {.polar_phase = phase, .x_origin = origin.x, .y_origin = origin.y},
                         origin.rotation[0]);
    }
  }
}

}  // namespace
}  // namespace kv::test
