// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

// The built tool on input that it has to refuse, and in trouble.
#include <gtest/gtest.h>

#include "kv/image_files/image_format.h"
#include "tool.h"

using namespace kv::polarization;

namespace {

const std::string kFrame = "P5 8 8 255\n" + std::string(64, 'x');

/// One line with that part, and nothing written.
void expect_refusal(const Tool& tool, const ToolResult& result, const std::string& part) {
  EXPECT_EQ(result.status, 2) << result.error;
  EXPECT_EQ(result.complaints(), 1) << result.error;
  EXPECT_PRED2(contains, result.error, part);
  EXPECT_EQ(result.error.rfind("kv-polarize: ", 0), 0u) << result.error;
  EXPECT_EQ(tool.files_in("out"), Names());
}

TEST(BadInput, WhatCannotBeUsedIsNamedWithItsFault) {
  const Tool tool;
  tool.write("frame.pgm", kFrame);
  tool.write("letter.png", "This is a letter, not a picture.\n");
  tool.write("narrow.pgm", "P5 3 8 255\n" + std::string(24, 'x'));
  std::filesystem::create_directory(tool.path("below"));
  const std::pair<const char*, const char*> cases[] = {
      {"transform letter.png -o out", "is given: by --width, --height and --raw-format"},
      {"transform narrow.pgm -o out", "narrow.pgm: a frame of 3 x 8 pixels"},
      {"transform no.pgm -o out", "no.pgm: there is no such file"},
      {"transform below -o out", "there are no frames in below"},
      {"transform frame.pgm -o frame.pgm", "cannot be made"},
      {"transform frame.pgm -o frame.pgm/below", "cannot be made"},
      {"transform frame.pgm -o out --width 8 --height 9 --raw-bits 16", "multiple of 144"},
      {"simulate -o no/frame.pgm", "cannot write"},
      {"simulate -o frame.jpg", ".pgm"},
      {"simulate -o out --bit-depth 17", "--bit-depth"},
      {"transform frame.pgm -o out --planes dolp,angle",
       "'angle'; the planes are normalized_stokes, intensity"},
      {"transform frame.pgm -o out --width 8 --height 8", "--raw-bits"},
      {"transform frame.pgm -o out --raw-bits 8 --height 8", "--width"},
      {"transform frame.pgm -o out --raw-format Mono8", "--width"},
      {"transform frame.pgm -o out --width 8 --height 8 --raw-bits 8 --raw-format Mono8",
       "--raw-format excludes --raw-bits"},
      {"transform frame.pgm -o out --width 8 --raw-bits 8", "--height"},
      {"transform -o out", "FRAME"},
      {"transform frame.pgm", "--output"},
      {"", "--help"},
  };
  for (const auto& [arguments, part] : cases) expect_refusal(tool, tool.run(arguments), part);
  EXPECT_EQ(tool.content("frame.pgm"), kFrame);
}

TEST(BadInput, OptionsOutOfRangeDoNothing) {
  const Tool tool;
  tool.write("frame.pgm", kFrame);
  const std::pair<std::string, Names> cases[] = {
      {"--phase", {"30"}},
      {"--origin", {"1.1", "-1,1", "1,-1", "1,1,1"}},
      {"--planes", {"\"\""}},
      {"--pictures", {"\"\"", "hologram"}},
      {"--bit-depth", {"0", "17"}},
      {"--output-max", {"0", "65536"}},
      {"--format", {"jpg"}},
      {"--raw-format", {"Mono9 --width 8 --height 8"}},
      {"--raw-bits", {"12 --width 8 --height 8"}},
      {"--width", {"1 --height 8 --raw-bits 8"}},
      {"--dolp-white", {"0", "1.1"}},
      {"--log", {"8"}},
  };
  for (const auto& [option, values] : cases) {
    for (const std::string& value : values) {
      const auto result = tool.run("transform frame.pgm -o out " + option + " " + value);
      expect_refusal(tool, result, option);
    }
  }
}

TEST(BadInput, LogLinesNeedTheLogger) {
#if defined(_WIN32)
  const std::string forget_library_path;
#else
  const std::string forget_library_path = "unset LD_LIBRARY_PATH; ";
#endif
  const TemporaryFolder place;
  const auto copy = [&](const char* file, const std::string& name) {
    std::filesystem::copy_file(file, place / name);
    return place / name;
  };
  copy(KV_PROCESSOR_PATH, KV_PROCESSOR_NAME);
  const Tool tool(copy(KV_TOOL_PATH, std::filesystem::path(KV_TOOL_PATH).filename().string()));
  tool.write("frame.pgm", kFrame);
  expect_refusal(tool, tool.run("transform frame.pgm -o out --log 7", forget_library_path),
                 "kevrinth_qrm_logger");
  EXPECT_EQ(tool.run("transform frame.pgm -o out", forget_library_path).status, 0);
}

TEST(BadInput, OneBadFrameDoesNotStopTheOthers) {
  const Tool tool;
  const std::string bad = "P5 3 3 255\n123456789";
  tool.write("a.pgm", kFrame + bad + kFrame);
  tool.write("b.pgm", "P5 8 8 255\n");
  tool.write("c.pgm", kFrame);
  tool.write("d.pgm", bad + kFrame + kFrame);
  std::filesystem::create_directory(tool.path("e.pgm"));
  const std::string run =
      "transform a.pgm b.pgm c.pgm d.pgm e.pgm --planes dolp --no-pictures --format pgm";
  const ToolResult single = tool.run(run + " -o out --stack none");
  const Names pages = {"a_1_dolp.pgm", "a_3_dolp.pgm", "c_dolp.pgm", "d_2_dolp.pgm",
                       "d_3_dolp.pgm"};
  EXPECT_EQ(tool.results_in("out"), pages);
  const ToolResult stacks = tool.run(run + " -o stacks");
  EXPECT_EQ(tool.results_in("stacks"), (Names{"c_dolp.pgm"}));
  for (const ToolResult& result : {single, stacks}) {
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.complaints(), 4) << result.error;
    EXPECT_PRED2(contains, result.error, "a.pgm, page 2: a frame of 3 x 3");
    EXPECT_PRED2(contains, result.error, "b.pgm: the PGM file is truncated");
    EXPECT_PRED2(contains, result.error, "d.pgm, page 1: a frame of 3 x 3");
    EXPECT_PRED2(contains, result.error, "e.pgm: this is a folder");
    EXPECT_PRED2(contains, result.out, "5 frames transformed, 4 failed");
  }
}

TEST(BadInput, NoResultReplacesAnotherOneOrAnInput) {
  const Tool tool;
  std::filesystem::create_directory(tool.path("other"));
  for (const char* name : {"a.pgm", "other/a.pgm", "a_dolp.pgm"}) tool.write(name, kFrame);
  const std::string run = "transform --overwrite --planes dolp --no-pictures --format pgm ";
  expect_refusal(tool, tool.run(run + "a.pgm other/a.pgm -o out"),
                 "results of a.pgm and of other/a.pgm would have the same name");
  expect_refusal(tool, tool.run(run + "a.pgm -o other/.. a_dolp.pgm"), "would replace an input");
  EXPECT_EQ(tool.content("a_dolp.pgm"), kFrame);
}

#if !defined(_WIN32)
TEST(BadInput, OutputThatGoesNowhereIsToldOf) {
  const Tool tool;
  tool.write("frame.pgm", kFrame);
  for (const char* arguments : {"info frame.pgm", "compare frame.pgm frame.pgm", "manual",
                                "--version", "transform --help", "completion bash"}) {
    const ToolResult result = tool.run(arguments, "", " >/dev/full");
    EXPECT_EQ(result.status, 1) << arguments;
    EXPECT_PRED2(contains, result.error, "standard output did not take") << arguments;
  }
  const ToolResult unread =
      tool.run("manual", "{ sleep 0.1; ", "; test $? = 0 || echo no >&2; } | true");
  EXPECT_EQ(unread.error, "");
}

// A limit on the size of files stands for a full disk: writes fail midway in the same manner.
TEST(BadInput, FilesThatCannotBeWrittenToTheirEndVanish) {
  const Tool tool;
  // Polarized at 0 degrees throughout, to very different degrees: in PNG a small plane of azimuth,
  // and a large one of DoLP, which is then the only file that fails, likely on another thread.
  std::string samples;
  for (unsigned row = 0; row < 512; ++row) {
    for (unsigned column = 0; column < 640; ++column) {
      const unsigned noise = (row * 640 + column) * 2654435761u >> 24;
      samples += static_cast<char>(row % 2 == column % 2 ? (row % 2 == 0 ? noise : 0) : 100);
    }
  }
  tool.write("frame.pgm", "P5 640 512 255\n" + samples);
  std::filesystem::create_directory(tool.path("out"));
  std::vector<std::string> runs = {
      "transform frame.pgm -o out --planes normalized_stokes",
      "transform frame.pgm -o out --planes azimuth,dolp --no-pictures"};
  for (const ImageFormatTraits& format : image_formats()) {
    if (format.available()) {
      runs.push_back("simulate -o out/frame" + std::string(format.endings[0]));
    }
  }
  for (const std::string& arguments : runs) {
    expect_refusal(tool, tool.run(arguments, "ulimit -f 8; "), "File too large");
  }
}

TEST(BadInput, FramesLargerThanTheMemoryAreReported) {
  const Tool tool;
  const std::string limit = "ulimit -v 500000; ";
  if (tool.run("--version", limit).status != 0) {
    GTEST_SKIP() << "a sanitizer reserves more memory than the limit";
  }
  tool.write("large.pgm", "P5 16384 16000 255\n");
  std::filesystem::resize_file(tool.path("large.pgm"), 19 + 16384 * 16000);
  expect_refusal(tool, tool.run("transform large.pgm -o out", limit),
                 "large.pgm: there is no memory for");
  expect_refusal(tool, tool.run("simulate -o x.pgm --width 16384 --height 16384", limit),
                 "kv-polarize: there is no memory for");
}

// The first frame's results show that the tool is at work, and 400 frames last for seconds.
TEST(Interrupt, FinishesTheFramesAtHandAndLeavesTheRest) {
  const Tool tool;
  tool.write("stack.raw", std::string(std::size_t{400} * 64 * 48, 'x'));
  const ToolResult result = tool.run(
      "transform stack.raw -o out --width 64 --height 48 --raw-bits 8 --planes dolp", "",
      " & for i in $(seq 1000); do ls out/stack_001_* && break; sleep 0.01; done >log 2>&1;"
      " kill -INT $!; wait $!");
  EXPECT_EQ(result.status, 130);
  EXPECT_EQ(result.error, "");
  EXPECT_PRED2(contains, result.out, "transformed");
  const Names names = tool.results_in("out");
  EXPECT_GE(names.size(), 4u);
  EXPECT_LT(names.size(), 4u * 400);
  EXPECT_EQ(names.size() % 4, 0u) << "half of a frame's files";
  for (const std::string& name : names) EXPECT_FALSE(contains(name, "partial")) << name;
}
#endif

}  // namespace
