// The lines that calls write: text, severity, source and order.
#include <gtest/gtest.h>

#include "host.h"

namespace kv::test {
namespace {

const char kNullHandle[] = "ERROR:  The specified polarization processor handle is NULL!";
const char kNullHandleToDestroy[] = "ERROR:  The specified color processor handle is NULL!";

class LogLines : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_EQ(host_.initialize(), kv_status_ok);
    ASSERT_EQ(host_.create(handle_), kv_status_ok);
    reset_recorder();
  }
  void TearDown() override {
    EXPECT_EQ(host_.destroy(handle_), kv_status_ok);
    EXPECT_EQ(host_.terminate(), kv_status_ok);
  }

  Host host_{{.logger = "complete", .avx512 = {}, .avx2 = {}}};
  PolarizationProcessor* handle_ = nullptr;
};

TEST_F(LogLines, OfNullHandles) {
  EXPECT_EQ(host_.get(nullptr), kv_status_null_handle);
  EXPECT_EQ(host_.set(nullptr), kv_status_null_handle);
  EXPECT_EQ(host_.destroy(nullptr), kv_status_null_handle);
  EXPECT_EQ(events(), error_line("get_custom_calibration_coefficients", kNullHandle) +
                          error_line("set_custom_calibration_coefficients", kNullHandle) +
                          error_line("destroy_polarization_processor", kNullHandleToDestroy));
}

TEST_F(LogLines, OfCallsThatSucceedThereAreNone) {
  EXPECT_EQ(host_.get(handle_), kv_status_ok);
  EXPECT_EQ(host_.set(handle_), kv_status_ok);
  PolarizationProcessor* second = nullptr;
  EXPECT_EQ(host_.create(second), kv_status_ok);
  EXPECT_EQ(host_.destroy(second), kv_status_ok);
  EXPECT_EQ(events(), Events{});
}

struct Exit {
  ProcessorStatus status;
  void (*spoil)(Arguments& arguments);
};

TEST_F(LogLines, EveryExitOfTransformIsTimed) {
  const Exit exits[]{
      {kv_status_ok, [](Arguments&) {}},
      {kv_status_invalid_polar_phase, [](Arguments& a) { a.polar_phase = 4; }},
      {kv_status_null_input, [](Arguments& a) { a.input = nullptr; }},
      {kv_status_no_outputs, [](Arguments& a) { a.intensity = nullptr; }},
      {kv_status_input_aliases_output, [](Arguments& a) { a.input = a.intensity; }},
      {kv_status_outputs_alias, [](Arguments& a) { a.dolp = a.intensity; }},
      {kv_status_invalid_width, [](Arguments& a) { a.width = 1; }},
      {kv_status_invalid_height, [](Arguments& a) { a.height = 1; }},
      {kv_status_zero_output_max, [](Arguments& a) { a.output_max = 0; }},
      {kv_status_invalid_bit_depth, [](Arguments& a) { a.bit_depth = 17; }},
  };
  for (const Exit& exit : exits) {
    reset_recorder();
    Frame frame;
    Arguments arguments = frame.arguments();
    exit.spoil(arguments);
    EXPECT_EQ(host_.transform(handle_, arguments), exit.status);
    EXPECT_EQ(events(), kTimingLine) << "status " << exit.status;
  }
}

}  // namespace
}  // namespace kv::test
