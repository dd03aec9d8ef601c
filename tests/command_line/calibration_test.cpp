// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

#include "kv/image_files.h"
#include "tool.h"

using namespace kv::polarization;

namespace {

/// Of the frames that simulate puts into a stack.
const std::string kEnding = traits_of(ImageFormat::tiff).available() ? ".tiff" : ".pgm";

/// A sensor's stack, taken once for all tests: it lies in stack/ of the tool's folder.
class Calibrate : public testing::Test {
 protected:
  Calibrate() {
    EXPECT_EQ(tool_
                  .run("simulate --calibration-stack --sensor 1 --seed 5 --width 64 --height 48 "
                       "--bit-depth 12 --phase 90 -o stack")
                  .status,
              0);
  }

  ToolResult calibrate(const std::string& arguments) const {
    return tool_.run("calibrate --manifest stack/stack.csv --phase 90 -o camera.json " + arguments);
  }

  Tool tool_;
};

// The middle of the film disc at 0 degrees, whose DoLP is 0.9, as the same sensor sees it.
TEST_F(Calibrate, CorrectsFramesOfTheSensor) {
  const ToolResult result = calibrate("--camera Model-1");
  EXPECT_EQ(result.status, 0) << result.error;
  EXPECT_PRED2(contains, result.out, "52 of 52 frames used");
  EXPECT_PRED2(contains, tool_.content("camera.html"), "Model-1");
  EXPECT_EQ(
      tool_
          .run("simulate --sensor 1 --seed 5 --width 64 --height 48 --bit-depth 12 --phase 90 "
               "-o scene.pgm")
          .status,
      0);

  const auto mean_error = [this](const std::string& calibration) {
    EXPECT_EQ(
        tool_
            .run("transform scene.pgm -o x --overwrite --planes dolp --no-pictures --format pgm " +
                 calibration)
            .status,
        0);
    const Frame dolp = open_frames(tool_.path("x/scene_dolp.pgm"))->read(0);
    double sum = 0;
    for (int row = 41; row < 44; ++row) {
      for (int column = 12; column < 15; ++column) {
        sum += dolp.samples[static_cast<std::size_t>(64 * row + column)] / 65535.0 / 9;
      }
    }
    return std::abs(sum - 0.9);
  };
  EXPECT_GT(mean_error("--phase 90"), 0.03);
  EXPECT_LT(mean_error("--calibration camera.json"), 0.015);

  const ToolResult other =
      tool_.run("transform scene.pgm --phase 0 --calibration camera.json -o y");
  EXPECT_EQ(other.status, 2);
  EXPECT_PRED2(contains, other.error, "phase 90");
}

TEST_F(Calibrate, SaysWhatIsWrongAndWritesNothing) {
  struct Case {
    std::string manifest;
    const char* arguments;
    const char* part;
  };
  const Case cases[] = {
      {"file,angle\n", "", "no column 'kind'"},
      {"file,kind,angle\n", "", "names no frames"},
      {"kind,file,angle\npolarized,stack/polarized_000,\n", "", "line 2: the angle is ''"},
      {"file,kind,angle\n# none\n\nstack/dark_000,darks,\n", "", "line 4: the kind is 'darks'"},
      {"file,kind,angle\nnone.pgm,dark,\n", "", "none.pgm: there is no such file"},
      {"file,kind,angle\n\"stack/polarized_000" + kEnding + "\",polarized,0\n", "--phase 90",
       "3 or more"},
  };
  for (const auto& [manifest, arguments, part] : cases) {
    tool_.write("list.csv", manifest);
    const ToolResult result =
        tool_.run(std::string("calibrate --manifest list.csv -o bad.json ") + arguments);
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.complaints(), 1);
    EXPECT_PRED2(contains, result.error, part);
  }
  // Told before any frame is read.
  for (const char* file : {"camera", "none/camera.json"}) {
    const ToolResult result = tool_.run("calibrate --manifest list.csv -o " + std::string(file));
    EXPECT_EQ(result.status, 2);
    EXPECT_PRED2(contains, result.error, file);
  }
  const ToolResult phase = tool_.run("calibrate --manifest stack/stack.csv -o bad.json");
  EXPECT_PRED2(contains, phase.error, "the phase of 90 degrees would fit");
  EXPECT_FALSE(std::filesystem::exists(tool_.path("bad.json")));
  EXPECT_FALSE(std::filesystem::exists(tool_.path("bad.gain.npy")));
}

TEST_F(Calibrate, IdentifiesTheMosaicFromTurnedLight) {
  const std::string frames =
      "identify stack/polarized_010" + kEnding + " stack/polarized_055" + kEnding + " --turned 45 ";
  const ToolResult told = tool_.run(frames + "--angle 10 --black-level 64");
  EXPECT_EQ(told.status, 0) << told.error;
  EXPECT_PRED2(contains, told.out, "--phase 90\n");
  const ToolResult open = tool_.run(frames);
  EXPECT_EQ(open.status, 1);
  EXPECT_PRED2(contains, open.out, "The angle of the light in the first frame would tell which");
}

}  // namespace
