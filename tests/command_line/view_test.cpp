// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include <gtest/gtest.h>

#include <sstream>

#include "tool.h"

namespace {

/// A sheet that was written as PNM.
struct Sheet {
  int width = 0, height = 0;
  std::string pixels;

  explicit Sheet(const std::string& content) {
    std::istringstream stream(content);
    std::string line;
    std::getline(stream, line);
    EXPECT_EQ(line, "P6");
    while (stream.peek() == '#') std::getline(stream, line);
    stream >> width >> height;
    pixels = content.substr(content.size() - static_cast<std::size_t>(3 * width * height));
  }

  std::size_t count(const std::string& colour) const {
    std::size_t found = 0;
    for (std::size_t i = 0; i < pixels.size(); i += 3) {
      found += pixels.compare(i, 3, colour) == 0 ? 1u : 0u;
    }
    return found;
  }
};

std::string grey_frame(int width, int height) {
  return "P5 " + std::to_string(width) + " " + std::to_string(height) + " 255\n" +
         std::string(static_cast<std::size_t>(width * height), 'x');
}

TEST(View, FitsTheSheetAndShowsSingleFlaggedPixels) {
  const Tool tool;
  const std::string clipped = "\xE6\x28\x28";  // the colour of its flag
  struct Case {
    int width, height;
    const char* scale;
    std::size_t pixels;  ///< of the sheet, that show one clipped sample: it has four pixels
  };
  for (const Case& of : {Case{1000, 800, "reduced by 3", 2}, {64, 48, "enlarged by 6", 4 * 36}}) {
    std::string frame = grey_frame(of.width, of.height);
    const auto flagged_pixels = [&] {
      tool.write("frame.pgm", frame);
      const ToolResult result = tool.run("view frame.pgm -o sheet.pnm --overwrite");
      EXPECT_EQ(result.status, 0) << result.error;
      EXPECT_PRED2(contains, result.out, of.scale);
      const Sheet sheet(tool.content("sheet.pnm"));
      EXPECT_LE(sheet.width, 1600);
      EXPECT_GT(sheet.width, 1200);
      return sheet.count(clipped);
    };
    const std::size_t of_legend = flagged_pixels();
    frame[frame.size() / 2] = '\xFF';
    EXPECT_EQ(flagged_pixels() - of_legend, of.pixels);
  }
  const auto narrow = tool.run("view frame.pgm -o narrow.pnm --sheet-width 1000");
  EXPECT_PRED2(contains, narrow.out, "enlarged by 3");
}

TEST(View, ReplacesNothingUnasked) {
  const Tool tool;
  tool.write("a.pgm", grey_frame(8, 8) + grey_frame(8, 8));
  tool.write("old.pnm", "old");
  for (const auto& [arguments, part] :
       {std::pair{"a.pgm -o old.pnm", "by --overwrite"},
        {"a.pgm -o ./a.pgm --overwrite", "is an input"},
        {"a.pgm -o x.pnm --page 3", "a.pgm: there is no page 3; the last one is 2"},
        {"a.pgm -o x.jpg", "x.jpg does not say"},
        {"none.pgm -o x.pnm", "none.pgm: there is no such file"},
        {"a.pgm -o x.pnm --sheet-width 20", "--sheet-width"}}) {
    const ToolResult result = tool.run("view " + std::string(arguments));
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.complaints(), 1) << result.error;
    EXPECT_PRED2(contains, result.error, part);
  }
  EXPECT_EQ(tool.content("old.pnm"), "old");
  EXPECT_EQ(tool.files_in(""), (Names{"a.pgm", "old.pnm"}));
  EXPECT_EQ(tool.run("view a.pgm -o old.pnm --page 2 --overwrite").status, 0);
  EXPECT_EQ(tool.content("old.pnm").substr(0, 2), "P6");
}

}  // namespace
