// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include <gtest/gtest.h>

#include "kv/image_files.h"
#include "tool.h"

using namespace kv::polarization;

namespace {

TEST(SimulateNight, WritesFramesThatDifferInNoiseIntoAFolderOrAFile) {
  const Tool tool;
  const std::string size = "simulate --width 40 --height 30 --bit-depth 12 ";
  for (const std::string sensor : {"", "--sensor 1 "}) {
    SCOPED_TRACE(sensor);
    ASSERT_EQ(tool.run(size + sensor + "-o one.pgm").status, 0);
    const ToolResult folder = tool.run(size + sensor + "--frames 20 --format pgm -o night");
    EXPECT_EQ(folder.status, 0) << folder.error;
    EXPECT_PRED2(contains, folder.out, "20 frames of 40 x 30");
    const Names names = tool.files_in("night");
    ASSERT_EQ(names.size(), 20u);
    EXPECT_EQ(names.front(), "frame_0001.pgm");
    EXPECT_EQ(names.back(), "frame_0020.pgm");
    EXPECT_EQ(tool.content("night/frame_0001.pgm"), tool.content("one.pgm"));
    std::string all;
    for (const std::string& name : names) {
      EXPECT_FALSE(contains(all, tool.content("night/" + name))) << name;
      all += tool.content("night/" + name);
    }
    EXPECT_EQ(tool.run(size + sensor + "--frames 20 -o night.pgm").status, 0);
    const auto pages = open_frames(tool.path("night.pgm"));
    ASSERT_EQ(pages->count(), 20u);
    for (std::size_t page = 0; page < names.size(); ++page) {
      const Frame expected = open_frames(tool.path("night/" + names[page]))->read(0);
      EXPECT_TRUE(pages->read(page).samples == expected.samples) << page;
    }
  }
  // The second frame is that of the next seed.
  ASSERT_EQ(tool.run(size + "--frames 2 --format pgm -o night").status, 0);
  ASSERT_EQ(tool.run(size + "--seed 2 -o one.pgm").status, 0);
  EXPECT_EQ(tool.content("night/frame_0002.pgm"), tool.content("one.pgm"));
}

TEST(SimulateNight, RefusesWhatTransformWouldAndOptionsThatContradict) {
  const Tool tool;
  for (const auto& [arguments, part] :
       {std::pair{"--width 3 --height 8 -o x.pgm", "with a height above 2 the width must be 4"},
        {"--width 2 --height 4 --frames 3 -o x", "with a height above 2 the width must be 4"},
        {"--width 2 --height 4 --calibration-stack -o x", "the width must be 4"},
        {"--frames 3 --calibration-stack -o x", "--frames excludes"},
        {"--frames 3 --format pgm -o x.pgm", "--format is of frames in a folder"},
        {"--format pgm -o x.pgm", "--format is of --frames"}}) {
    const ToolResult result = tool.run("simulate " + std::string(arguments));
    EXPECT_EQ(result.status, 2) << arguments;
    EXPECT_PRED2(contains, result.error, part);
  }
  for (const std::string& name : tool.files_in("x")) ADD_FAILURE() << name;
  EXPECT_FALSE(std::filesystem::exists(tool.path("x.pgm")));
  EXPECT_EQ(tool.run("simulate --width 3 --height 2 -o x.pgm").status, 0);
}

}  // namespace
