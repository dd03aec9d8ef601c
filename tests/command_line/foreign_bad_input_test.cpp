// The built tool on PNG and TIFF files of kinds that are no raw frames, or no longer whole.
#include <gtest/gtest.h>
#include <png.h>
#include <tiffio.h>

#include "tool.h"
#include "toolkit/foreign_images.h"

namespace {

void expect_refused(const Tool& tool, const std::string& name, const std::string& part) {
  const ToolResult result = tool.run({"transform", tool.path(name), "-o", tool.path("out")});
  EXPECT_EQ(result.status, 1) << name;
  EXPECT_EQ(result.complaints(), 1u) << result.error;
  EXPECT_NE(result.error.find(part), std::string::npos) << result.error;
  EXPECT_TRUE(tool.files_in("out").empty()) << name;
}

TEST(BadInput, PngOfOtherKindsIsNamed) {
  const Tool tool;
  struct Kind {
    int color_type, bits;
    const char* part;
  };
  for (const Kind& kind :
       {Kind{PNG_COLOR_TYPE_RGB, 8, "RGB colour of 8"},
        Kind{PNG_COLOR_TYPE_RGB, 16, "RGB colour of 16"},
        Kind{PNG_COLOR_TYPE_RGBA, 8, "RGB colour"}, Kind{PNG_COLOR_TYPE_PALETTE, 1, "palette"},
        Kind{PNG_COLOR_TYPE_GRAY_ALPHA, 8, "alpha"}, Kind{PNG_COLOR_TYPE_GRAY, 1, "of 1 bits"},
        Kind{PNG_COLOR_TYPE_GRAY, 4, "of 4 bits"}}) {
    write_png_of_kind(tool.path("kind.png"), kind.color_type, kind.bits);
    expect_refused(tool, "kind.png", kind.part);
  }
}

TEST(BadInput, TiffOfOtherKindsIsNamed) {
  const Tool tool;
  const std::pair<TiffKind, const char*> cases[] = {
      {{.channels = 3, .bits = 8, .photometric = PHOTOMETRIC_RGB}, "3 channels"},
      {{.bits = 8, .photometric = PHOTOMETRIC_PALETTE}, "palette"},
      {{.bits = 1}, "1 bits"},
      {{.bits = 32}, "32 bits"},
      {{.bits = 32, .sample_format = SAMPLEFORMAT_IEEEFP}, "float"},
      {{.sample_format = SAMPLEFORMAT_INT}, "signed"},
      {{.photometric = PHOTOMETRIC_MINISWHITE}, "plain grey"},
  };
  for (const auto& [kind, part] : cases) {
    write_tiff_pages(tool.path("kind.tif"), {kind});
    expect_refused(tool, "kind.tif", part);
  }
}

// Wherever a file is cut, the tool ends with one line; a cut behind all pixels may go unnoticed.
TEST(BadInput, TruncatedFilesAreRefused) {
  const Tool tool;
  write_png_of_kind(tool.path("whole.png"), PNG_COLOR_TYPE_GRAY, 8);
  write_tiff_pages(tool.path("whole.tif"), {{}, {.compression = COMPRESSION_LZW}});
  for (const std::string extension : {".png", ".tif"}) {
    const std::string whole = content_of(tool.path("whole" + extension));
    for (std::size_t size = 9; size + 16 < whole.size(); size += whole.size() / 12) {
      write_content(tool.path("cut" + extension), whole.substr(0, size));
      const ToolResult result = tool.run(
          {"transform", tool.path("cut" + extension), "-o", tool.path("out"), "--no-pictures"});
      EXPECT_EQ(result.status, 1) << extension << " cut after " << size << ": " << result.error;
      EXPECT_GE(result.complaints(), 1u);
      EXPECT_NE(result.error.find("damaged or truncated"), std::string::npos) << result.error;
    }
  }
}

TEST(BadInput, GoodPagesOfATiffAreDoneWhenOneIsBad) {
  const Tool tool;
  write_tiff_pages(tool.path("stack.tif"), {{}, {.bits = 1}, {}});
  const ToolResult result = tool.run({"transform", tool.path("stack.tif"), "-o", tool.path("out"),
                                      "--planes", "dolp", "--no-pictures"});
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.complaints(), 1u);
  EXPECT_NE(result.error.find("page 2"), std::string::npos) << result.error;
  EXPECT_EQ(tool.files_in("out"),
            (std::vector<std::string>{"stack_1_dolp.png", "stack_3_dolp.png"}));
}

}  // namespace
