// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

// The built tool compares pixels of files that the test wrote.
#include <gtest/gtest.h>

#include <bit>
#include <cstring>
#include <limits>
#include <nlohmann/json.hpp>

#include "kv/image_files/image_writer.h"
#include "tool.h"

using namespace kv::polarization;

namespace {

std::string pgm(const std::string& samples, const std::string& size = "4 2",
                const std::string& most = "255") {
  return "P5 " + size + " " + most + "\n" + samples;
}

struct Case {
  const char* name;
  std::string left, right, options;
  int status;
  std::string line;  ///< in what is told
};

void expect_case(const Tool& tool, const Case& tested) {
  const ToolResult result = tool.run("compare left right " + tested.options);
  EXPECT_EQ(result.status, tested.status) << tested.name << "\n" << result.out << result.error;
  EXPECT_PRED2(contains, result.out + result.error, tested.line) << tested.name;
}

TEST(Compare, TellsWhatDiffersOfFiles) {
  const std::string eight = pgm("abcdefgh");
  const std::string more = pgm("abcdefgh") + pgm("ABCDEFGH");
  const Case cases[] = {
      {"the same bytes", eight, eight, "", 0, "1 file is equal"},
      {"other headers", eight, pgm("abcdefgh", "4\n2"), "", 0, "1 file is equal"},
      {"other headers as bytes", eight, pgm("abcdefgh", "4\n2"), "--bytes", 1, "from byte 4 on"},
      {"two pixels", eight, pgm("abcdeijh"), "", 1,
       "left: 2 of 8 pixels differ, by at most 3; the first at column 1, row 1: 102 against 105\n"},
      {"within a tolerance", eight, pgm("abcdeijh"), "--tolerance 3", 0, "1 file is equal"},
      {"beyond it", eight, pgm("abcdegjh"), "--tolerance 2.5", 1,
       "1 of 8 pixels differ, by at most 3"},
      {"16 bits", pgm("\1a\1b", "2 1", "65535"), pgm("\1a\2b", "2 1", "65535"), "", 1,
       "by at most 256; the first at column 1, row 0: 354 against 610"},
      {"the second page", more, pgm("abcdefgh") + pgm("ABCDEFGI"), "", 1,
       "1 of 16 pixels differ, by at most 1; the first at column 3, row 1, page 2: 72 against 73"},
      {"a channel", "P6 1 2 255\nabcdef", "P6 1 2 255\nabcdgh", "", 1,
       "1 of 2 pixels differ, by at most 2; the first at column 0, row 1, channel 1: 101 against "
       "103"},
      {"pages", more, eight, "", 1, "pages: 2 against 1"},
      {"sizes", eight, pgm("abcdefgh", "2 4"), "", 1,
       "4 x 2 pixels, 8 bits, against 2 x 4 pixels, 8 bits"},
      {"depths", eight, pgm("abcdefgh", "2 2", "65535"), "", 1, "against 2 x 2 pixels, 16 bits"},
      {"texts", "a,b\n1,2\n", "a,b\n1,3\n", "", 1, "the bytes differ from byte 6 on"},
      {"a shorter text", "a,b\n", "a,b\n1", "", 1, "one ends after 4 bytes"},
      {"an image and a text", eight, "a,b\n", "", 1, "an image, against a file that is none"},
      {"a damaged file", eight, pgm("abcdefg"), "", 2, "right: "},
  };
  const Tool tool;
  for (const Case& tested : cases) {
    tool.write("left", tested.left);
    tool.write("right", tested.right);
    expect_case(tool, tested);
  }
}

TEST(Compare, TakesFloatsByTheirBits) {
  const float nan = std::bit_cast<float>(0x7FC00000U);
  const float other_nan = std::bit_cast<float>(0x7FC00001U);
  const float infinity = std::numeric_limits<float>::infinity();
  const struct {
    float left, right;
    const char* options;
    int status;
    const char* line;
  } cases[] = {
      {nan, nan, "", 0, "equal"},
      {nan, other_nan, "", 1, "by at most 0; the first at column 1, row 0: NaN (bits 7FC00000) "},
      {nan, other_nan, "--tolerance 0.1", 0, "equal"},
      {0.0F, -0.0F, "", 1, "by at most 0; the first at column 1, row 0: 0 against -0"},
      {0.0F, -0.0F, "--tolerance 1e-9", 0, "equal"},
      {nan, 1.5F, "--tolerance 1000", 1, "by at most inf; the first at column 1, row 0: NaN"},
      {infinity, infinity, "--tolerance 1", 0, "equal"},
      {infinity, -infinity, "", 1, "inf against -inf"},
      {0.1F, 0.3F, "", 1, "0.1 against 0.3"},
  };
  const Tool tool;
  for (const auto& [left, right, options, status, line] : cases) {
    // The first value has another format and is the same.
    const auto save = [&tool](const char* name, float value) {
      save_image(tool.path(name), FloatImage{2, 1, 1, std::vector<float>{0.25F, value}});
      std::filesystem::rename(tool.path(name),
                              tool.path(std::string(name, std::strcspn(name, "."))));
    };
    save("left.npy", left);
    save(traits_of(ImageFormat::tiff).available() ? "right.tiff" : "right.npy", right);
    expect_case(tool, {line, "", "", options, status, line});
  }
}

TEST(Compare, PairsTheFilesOfFolders) {
  const Tool tool;
  for (const char* folder : {"old/below", "new/below"}) {
    std::filesystem::create_directories(tool.path(folder));
  }
  for (const char* side : {"old/", "new/"}) {
    tool.write(std::string(side) + "below/same.pgm", pgm("abcdefgh"));
    tool.write(std::string(side) + "kv-polarize.journal", side);
  }
  EXPECT_EQ(tool.run("compare old new").out, "1 file is equal\n");
  tool.write("old/below/map.json", "{}");
  tool.write("new/below/map.json", "[]");
  tool.write("old/c.pgm", pgm("abcdefgh"));
  tool.write("new/c.pgm", pgm("abcdefgx"));
  tool.write("old/gone", "");
  tool.write("new/come", "");
  const ToolResult result = tool.run("compare old new/");
  EXPECT_EQ(result.status, 1);
  const std::string below = std::filesystem::path("below/map.json").make_preferred().string();
  EXPECT_EQ(result.out, below + ": the bytes differ from byte 0 on\n" +
                            "c.pgm: 1 of 8 pixels differ, by at most 16; the first at column 3, "
                            "row 1: 104 against 120\n"
                            "come: only in new/\n"
                            "gone: only in old\n"
                            "1 file is equal, 2 differ, 1 only in old, 1 only in new/\n");
  const ToolResult told = tool.run("compare old new --json");
  EXPECT_EQ(told.status, 1);
  const auto json = nlohmann::json::parse(told.out);
  EXPECT_EQ(json["equal"], false);
  ASSERT_EQ(json["files"].size(), 4u);
  EXPECT_EQ(json["files"][1]["first"]["b"], 120);
  EXPECT_EQ(json["files"][1]["of"], 8);
  EXPECT_EQ(json["files"][2]["result"], "only in b");
}

TEST(Compare, TellsTroubleApartFromDifferences) {
  const Tool tool;
  for (const char* folder : {"empty", "other", "full"}) {
    std::filesystem::create_directory(tool.path(folder));
  }
  tool.write("full/a.pgm", pgm("abcdefgh"));
  tool.write("other/a.pgm", "P5 4 2 255\nab");
  const std::pair<const char*, const char*> cases[] = {
      {"empty empty", "there are no files in empty"},
      {"full missing", "missing: there is no such file or folder"},
      {"full full/a.pgm", "full is a folder, full/a.pgm is a file"},
      {"full other", "other/a.pgm: "},
      {"full full --bytes --tolerance 1", "--bytes excludes --tolerance"},
      {"full", "B"},
  };
  for (const auto& [arguments, line] : cases) {
    const ToolResult result = tool.run(std::string("compare ") + arguments);
    EXPECT_EQ(result.status, 2) << arguments;
    std::string error = result.error;
    std::ranges::replace(error, '\\', '/');
    EXPECT_PRED2(contains, error, line);
  }
}

}  // namespace
