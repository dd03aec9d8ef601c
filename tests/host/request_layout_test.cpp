// The records of a call as a vector module finds them in memory.
#include <gtest/gtest.h>

#include <array>
#include <cstring>

#include "host.h"

namespace kv::test {
namespace {

/// A processor whose frames a fake module gets.
class RequestLayout : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_EQ(host_.initialize(), kv_status_ok);
    ASSERT_EQ(host_.create(handle_), kv_status_ok);
    Frame frame;
    ASSERT_EQ(host_.transform(handle_, frame.arguments()), kv_status_ok);
    if (frame.intensity[0] != kUntouched) GTEST_SKIP() << "no vector module on this processor";
  }
  void TearDown() override {
    EXPECT_EQ(host_.destroy(handle_), kv_status_ok);
    EXPECT_EQ(host_.terminate(), kv_status_ok);
  }

  TransformCall call(const Arguments& arguments) const {
    EXPECT_EQ(host_.transform(handle_, arguments), kv_status_ok);
    return last_transform();
  }

  Host host_{{.logger = {}, .avx512 = "complete", .avx2 = "complete"}};
  PolarizationProcessor* handle_ = nullptr;
};

template <class Field>
Field field(const TransformCall& call, std::size_t offset) {
  Field value;
  std::memcpy(&value, call.request + offset, sizeof value);
  return value;
}

TEST_F(RequestLayout, Fields) {
  std::array<std::uint16_t, 6> samples{};
  std::array<float, 12> normalized_stokes{};
  std::array<std::array<std::uint16_t, 6>, 5> planes{};
  const TransformCall seen = call({.polar_phase = kv_polar_phase_45,
                                   .input = samples.data(),
                                   .x_origin = 1,
                                   .y_origin = 2,
                                   .width = 2,
                                   .height = 3,
                                   .bit_depth = 10,
                                   .output_max = 65535,
                                   .normalized_stokes = normalized_stokes.data(),
                                   .intensity = planes[0].data(),
                                   .stokes_s1 = planes[1].data(),
                                   .stokes_s2 = planes[2].data(),
                                   .azimuth = planes[3].data(),
                                   .dolp = planes[4].data()});
  EXPECT_EQ(field<std::int64_t>(seen, 0), 3) << "height";
  EXPECT_EQ(field<std::int64_t>(seen, 8), 2) << "width";
  EXPECT_EQ(field<std::int32_t>(seen, 16), kv_polar_phase_90) << "polar_phase";
  EXPECT_EQ(field<const std::uint16_t*>(seen, 24), samples.data()) << "input";
  EXPECT_EQ(field<std::uint32_t>(seen, 32), 10u) << "bit_depth";
  EXPECT_EQ(field<float>(seen, 36), 1023.0f) << "input_max";
  EXPECT_EQ(field<float>(seen, 40), 65535.0f) << "output_max";
  EXPECT_EQ(field<std::int32_t>(seen, 44), 65535) << "output_max_int";
  EXPECT_EQ(field<float*>(seen, 48), normalized_stokes.data()) << "normalized_stokes";
  for (std::size_t plane = 0; plane < planes.size(); ++plane) {
    EXPECT_EQ(field<std::uint16_t*>(seen, 56 + 8 * plane), planes[plane].data()) << plane;
  }
  EXPECT_EQ(seen.sse41_available, 1);
  EXPECT_EQ(static_cast<const void*>(seen.instance), static_cast<const void*>(handle_));
}

TEST_F(RequestLayout, UnwantedPlanesAreNull) {
  Frame frame;
  const TransformCall seen = call(frame.arguments());
  for (const std::size_t offset : {48u, 64u, 72u, 80u, 88u}) {
    EXPECT_EQ(field<void*>(seen, offset), nullptr) << offset;
  }
}

struct PhaseCase {
  PolarPhase polar_phase;
  std::int32_t x_origin;
  std::int32_t y_origin;
  std::int32_t in_request;
  std::array<std::ptrdiff_t, 4> sets;  ///< Of TL, TR, BL, BR, numbered by their polarizer.
};

TEST_F(RequestLayout, PhaseAndView) {
  const PhaseCase cases[]{{0, 0, 0, 0, {0, 3, 1, 2}},   {1, 0, 0, 1, {1, 2, 0, 3}},
                          {2, 0, 0, 2, {2, 1, 3, 0}},   {3, 0, 0, 3, {3, 0, 2, 1}},
                          {0, 1, 0, 3, {3, 0, 2, 1}},   {0, 0, 1, 1, {1, 2, 0, 3}},
                          {3, 1, 1, 1, {1, 2, 0, 3}},   {-1, 0, 0, -1, {0, 3, 1, 2}},
                          {-7, 2, 4, -7, {0, 3, 1, 2}}, {-1, 0, 1, 1, {1, 2, 0, 3}}};
  for (const PhaseCase& phase : cases) {
    SCOPED_TRACE(phase.polar_phase);
    Frame frame;
    Arguments arguments = frame.arguments();
    arguments.polar_phase = phase.polar_phase;
    arguments.x_origin = phase.x_origin;
    arguments.y_origin = phase.y_origin;
    const TransformCall seen = call(arguments);
    EXPECT_EQ(field<std::int32_t>(seen, 16), phase.in_request);
    for (std::size_t position = 0; position < 4; ++position) {
      // The sets, 64 bytes each, stand at the begin of the instance.
      EXPECT_EQ(seen.view[position] - seen.instance, 64 * phase.sets[position]) << position;
    }
  }
}

}  // namespace
}  // namespace kv::test
