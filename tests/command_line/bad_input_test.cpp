// The built tool on input that it has to refuse.
#include <gtest/gtest.h>

#include "tool.h"
#include "toolkit/image_files/image_writer.h"

namespace {

/// Each: one line with that part, that exit status, and nothing written.
void expect_refusal(const Tool& tool, const ToolResult& result, int status, const std::string& part,
                    const std::string& folder = "out") {
  EXPECT_EQ(result.status, status) << result.error;
  EXPECT_EQ(result.complaints(), 1u) << result.error;
  EXPECT_NE(result.error.find(part), std::string::npos) << result.error;
  EXPECT_EQ(result.error.rfind("kv-polarize: ", 0), 0u) << result.error;
  EXPECT_TRUE(tool.files_in(folder).empty());
}

struct BadFile {
  const char* name;
  std::string content;
  const char* part_of_message;
};

TEST(BadInput, FilesThatAreNoFramesAreNamedWithTheirFault) {
  const BadFile cases[] = {
      {"text.png", "This is a letter, not a picture.\n", "neither PNG, TIFF nor PGM"},
      {"empty.png", "", "empty"},
      {"color.ppm", "P6 4 4 255\n" + std::string(48, 'x'), "P6"},
      {"short.pgm", "P5 8 8 255\n" + std::string(63, 'x'), "truncated"},
      {"narrow.pgm", "P5 3 8 255\n" + std::string(24, 'x'), "4 or more"},
      {"narrow2.pgm", "P5 2 3 255\n" + std::string(6, 'x'), "4 or more"},
      {"line.pgm", "P5 8 1 255\n" + std::string(8, 'x'), "2 or more"},
  };
  const Tool tool;
  for (const BadFile& bad : cases) {
    SCOPED_TRACE(bad.name);
    write_content(tool.path(bad.name), bad.content);
    const ToolResult result = tool.run({"transform", tool.path(bad.name), "-o", tool.path("out")});
    expect_refusal(tool, result, 1, bad.part_of_message);
    EXPECT_NE(result.error.find(bad.name), std::string::npos) << result.error;
  }
}

TEST(BadInput, PlacesThatCannotBeUsedAreNamedWithTheirFault) {
  const Tool tool;
  write_content(tool.path("frame.pgm"), "P5 8 8 255\n" + std::string(64, 'x'));
  write_content(tool.path("file"), "keep me");
  const std::string frame = tool.path("frame.pgm");
  expect_refusal(tool, tool.run({"transform", tool.path("no.pgm"), "-o", tool.path("out")}), 1,
                 "no such file");
  expect_refusal(tool, tool.run({"transform", tool.path(""), "-o", tool.path("out")}), 1, "folder");
  expect_refusal(tool, tool.run({"transform", frame, "-o", tool.path("file")}), 1,
                 "cannot be made");
  expect_refusal(tool, tool.run({"transform", frame, "-o", tool.path("file/below")}), 1,
                 "cannot be made");
  expect_refusal(tool, tool.run({"simulate", "-o", tool.path("no/frame.pgm")}), 1, "cannot write");
  expect_refusal(tool, tool.run({"simulate", "-o", tool.path("frame.jpg")}), 1, ".pgm");
  EXPECT_EQ(content_of(tool.path("file")), "keep me");
}

TEST(BadInput, RawSizesThatDoNotFitAreExplained) {
  const Tool tool;
  write_content(tool.path("dump.raw"), std::string(100, 'x'));
  expect_refusal(tool,
                 tool.run({"transform", tool.path("dump.raw"), "-o", tool.path("out"), "--width",
                           "8", "--height", "8", "--raw-bits", "8"}),
                 1, "multiple of 64");
}

TEST(BadInput, WrongCommandLinesDoNothing) {
  const Tool tool;
  write_content(tool.path("frame.pgm"), "P5 8 8 255\n" + std::string(64, 'x'));
  const std::vector<std::string> start = {"transform", tool.path("frame.pgm"), "-o",
                                          tool.path("out")};
  const std::pair<std::vector<std::string>, const char*> cases[] = {
      {{"--phase", "30"}, "--phase"},
      {{"--origin", "1"}, "--origin"},
      {{"--origin", "1,-1"}, "--origin"},
      {{"--origin", "1,1,1"}, "--origin"},
      {{"--planes", "dolp,angle"}, "angle"},
      {{"--planes", ""}, "--planes"},
      {{"--bit-depth", "17"}, "--bit-depth"},
      {{"--bit-depth", "0"}, "--bit-depth"},
      {{"--output-max", "65536"}, "--output-max"},
      {{"--output-max", "0"}, "--output-max"},
      {{"--format", "jpg"}, "--format"},
      {{"--width", "8", "--height", "8"}, "--raw-bits"},
      {{"--width", "8", "--height", "8", "--raw-bits", "12"}, "--raw-bits"},
      {{"--dolp-white", "0"}, "--dolp-white"},
      {{"--log", "8"}, "--log"},
      {{"--log", "debug"}, "--log"},
      {{"--nonsense"}, "--nonsense"},
  };
  for (const auto& [options, part] : cases) {
    SCOPED_TRACE(options[0] + " " + options.back());
    std::vector<std::string> arguments = start;
    arguments.insert(arguments.end(), options.begin(), options.end());
    expect_refusal(tool, tool.run(arguments), 2, part);
  }
  expect_refusal(tool, tool.run({"transform", "-o", tool.path("out")}), 2, "FRAME");
  expect_refusal(tool, tool.run({"transform", tool.path("frame.pgm")}), 2, "--output");
  expect_refusal(tool, tool.run({}), 2, "--help");
}

TEST(BadInput, LogLinesNeedTheLogger) {
#if defined(_WIN32)
  const std::string forget_library_path;
#else
  const std::string forget_library_path = "unset LD_LIBRARY_PATH; ";
#endif
  const Tool files;
  write_content(files.path("frame.pgm"), "P5 8 8 255\n" + std::string(64, 'x'));
  for (const std::filesystem::path file : {KV_TOOL_PATH, KV_PROCESSOR_PATH}) {
    std::filesystem::copy_file(file, files.path(file.filename().string()));
  }
  const Tool lone_tool(files.path(std::filesystem::path(KV_TOOL_PATH).filename().string()));
  expect_refusal(files,
                 lone_tool.run_after(forget_library_path, {"transform", files.path("frame.pgm"),
                                                           "-o", files.path("out"), "--log", "7"}),
                 1, "kevrinth_qrm_logger");
}

TEST(BadInput, OneBadFrameDoesNotStopTheOthers) {
  const Tool tool;
  for (const char* name : {"a.pgm", "c.pgm"}) {
    write_content(tool.path(name), "P5 8 8 255\n" + std::string(64, 'x'));
  }
  write_content(tool.path("b.pgm"), "P5 8 8 255\n");
  const ToolResult result =
      tool.run({"transform", tool.path("a.pgm"), tool.path("b.pgm"), tool.path("c.pgm"), "-o",
                tool.path("out"), "--planes", "dolp", "--no-pictures", "--format", "pgm"});
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.complaints(), 1u) << result.error;
  EXPECT_NE(result.out.find("2 frames transformed, 1 failed"), std::string::npos) << result.out;
  EXPECT_EQ(tool.files_in("out"), (std::vector<std::string>{"a_dolp.pgm", "c_dolp.pgm"}));
}

TEST(BadInput, NoResultReplacesAnotherOneOrAnInput) {
  const Tool tool;
  const std::string frame = "P5 8 8 255\n" + std::string(64, 'x');
  std::filesystem::create_directory(tool.path("other"));
  for (const char* name : {"a.pgm", "other/a.pgm", "a_dolp.pgm"})
    write_content(tool.path(name), frame);
  const std::vector<std::string> rest = {"--planes", "dolp", "--no-pictures", "--format", "pgm"};

  std::vector<std::string> twins = {"transform", tool.path("a.pgm"), tool.path("other/a.pgm"), "-o",
                                    tool.path("out")};
  twins.insert(twins.end(), rest.begin(), rest.end());
  const ToolResult clash = tool.run(twins);
  EXPECT_EQ(clash.status, 1);
  EXPECT_NE(clash.error.find("would replace those of"), std::string::npos) << clash.error;
  EXPECT_EQ(tool.files_in("out").size(), 1u);

  std::vector<std::string> onto_input = {"transform", tool.path("a.pgm"), tool.path("a_dolp.pgm"),
                                         "-o", tool.path("")};
  onto_input.insert(onto_input.end(), rest.begin(), rest.end());
  const ToolResult kept = tool.run(onto_input);
  EXPECT_EQ(kept.status, 1);
  EXPECT_NE(kept.error.find("would replace an input"), std::string::npos) << kept.error;
  EXPECT_EQ(content_of(tool.path("a_dolp.pgm")), frame);
}

#if !defined(_WIN32)
// A limit on the size of files stands for a full disk: writes fail midway in the same manner.
TEST(BadInput, FilesThatCannotBeWrittenToTheirEndVanish) {
  const Tool tool;
  const std::string small_files = "ulimit -f 8; ";
  std::vector<std::string> frame = {"simulate", "--width", "640", "--height", "512", "-o"};
  std::vector<std::string> extensions = kv::plane_format_names();
  extensions.emplace_back("raw");
  for (const std::string& extension : extensions) {
    frame.push_back(tool.path("frame." + extension));
    expect_refusal(tool, tool.run_after(small_files, frame), 1, "cannot write", "");
    frame.pop_back();
  }

  frame.push_back(tool.path("frame.pgm"));
  ASSERT_EQ(tool.run(frame).status, 0);
  for (const char* plane : {"normalized_stokes", "dolp"}) {
    expect_refusal(tool,
                   tool.run_after(small_files, {"transform", tool.path("frame.pgm"), "-o",
                                                tool.path("out"), "--planes", plane}),
                   1, "cannot write");
  }
}
#endif

}  // namespace
