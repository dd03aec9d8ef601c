// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include <gtest/gtest.h>

#include <string>

#include "error_of.h"
#include "kv/image_files.h"
#include "temporary_folder.h"

using namespace kv::polarization;

namespace {

using namespace std::string_literals;

class Provenance : public testing::Test {
 protected:
  /// That of a file with this content.
  auto of(const std::string& content) const {
    write_content(path_, content);
    return provenance_of(path_);
  }

  TemporaryFolder folder_;
  std::filesystem::path path_ = folder_ / "plane.tiff";  // the content counts, not the name
};

TEST_F(Provenance, StandsInTheFileOrBesideIt) {
  const std::string text = R"({"made": "by \u00E4", "of": [1, 2]} )"
                           "\xC3\xA4";
  const Buffer<std::uint16_t> samples = {1, 2};
  const auto frame = [&](ImageFormat format, const WriteOptions& options) {
    return written(path_, [&](auto& file) {
      write_image(file, format, GreyImage{2, 1, 9, samples}, options);
    });
  };
  for (const ImageFormatTraits& traits : image_formats()) {
    if (!traits.available()) continue;
    SCOPED_TRACE(traits.name);
    std::filesystem::remove(provenance_beside(path_));
    frame(traits.format, {.title = "A\ntitle"});
    EXPECT_EQ(provenance_of(path_), std::nullopt);
    write_content(folder_ / "plane.tiff.json", "beside\r\n");
    EXPECT_EQ(provenance_of(path_), traits.keeps_text ? std::nullopt : std::optional("beside"s));
    frame(traits.format, {.title = "A title", .provenance = text});
    EXPECT_EQ(provenance_of(path_), traits.keeps_text ? text : "beside");
    // Frames are read as before.
    if (traits.has_header) {
      EXPECT_EQ(open_frames(path_)->read(0).samples, samples);
    }
  }
  written(path_, [&](auto& file) {
    write_image(file, ImageFormat::pgm, Picture(1, 1, 3), {.provenance = "two\nlines"});
  });
  EXPECT_EQ(provenance_of(path_), "two lines");
}

TEST_F(Provenance, IsNoneInAHeadThatIsCut) {
  for (const ImageFormatTraits& traits : image_formats()) {
    if (!traits.keeps_text || traits.format == ImageFormat::pgm) continue;
    const std::string whole = written(path_, [&](auto& file) {
      write_image(file, traits.format, Picture(1, 1, 3), {.provenance = "provenance"});
    });
    EXPECT_EQ(of(whole), "provenance") << traits.name;
    for (std::size_t size = 8; size <= whole.find("provenance") + 8; ++size) {
      EXPECT_EQ(of(whole.substr(0, size)), std::nullopt) << traits.name << size;
    }
  }
}

TEST_F(Provenance, IsNoneWhereNothingTells) {
  write_content(folder_ / "plane.tiff.json", "stale");
  EXPECT_EQ(provenance_of(path_), std::nullopt);
  EXPECT_EQ(provenance_of(path_.parent_path()), std::nullopt);
  EXPECT_EQ(of("P5"), std::nullopt);
  EXPECT_EQ(of("P5\n# provenance x"), "x");
  const bool reads_tiff = traits_of(ImageFormat::tiff).available();
  EXPECT_EQ(of("II*\0xxxx"s), reads_tiff ? std::nullopt : std::optional("stale"s));
}

}  // namespace
