#include <gtest/gtest.h>

#include <string>

#include "temporary_folder.h"
#include "toolkit/error.h"
#include "toolkit/image_files/frame_reader.h"
#include "toolkit/image_files/image_writer.h"

namespace {

kv::Frame counting_frame(int width, int height, int bit_depth) {
  kv::Frame frame = kv::make_frame(static_cast<std::uint64_t>(width),
                                   static_cast<std::uint64_t>(height), bit_depth);
  // A step that has no factor in common with the range reaches low and high bytes alike.
  for (std::size_t i = 0; i < frame.samples.size(); ++i) {
    frame.samples[i] = static_cast<std::uint16_t>(i * 40503 % (1u << bit_depth));
  }
  return frame;
}

void write_frame(const std::filesystem::path& path, const kv::Frame& frame) {
  kv::PendingFile file(path);
  kv::write_grey(file, kv::format_for(path),
                 {frame.width, frame.height, frame.bit_depth, frame.samples});
  file.close();
  file.publish();
}

std::string refusal_of(const std::filesystem::path& path,
                       const std::optional<kv::RawShape>& shape = std::nullopt) {
  try {
    kv::open_frames(path, shape)->read(0);
    return "";
  } catch (const kv::Error& error) {
    return error.what();
  }
}

TEST(ImageFiles, BringSamplesBackInEveryFormat) {
  const TemporaryFolder folder;
  auto formats = kv::plane_format_names();
  formats.emplace_back("raw");
  for (const std::string& format : formats) {
    for (const int bit_depth : {1, 8, 10, 12, 16}) {
      const kv::Frame frame = counting_frame(37, 23, bit_depth);
      const auto path = folder / ("frame." + format);
      write_frame(path, frame);
      std::optional<kv::RawShape> shape;
      if (format == "raw") shape = kv::RawShape{37, 23, bit_depth > 8 ? 16 : 8};

      const auto reader = kv::open_frames(path, shape);
      ASSERT_EQ(reader->count(), 1u);
      const kv::Frame back = reader->read(0);
      EXPECT_EQ(back.width, 37) << format;
      EXPECT_EQ(back.height, 23) << format;
      EXPECT_EQ(back.samples, frame.samples) << format << " of " << bit_depth << " bits";
      const bool tells_depth = format == "pgm" || format == "tiff";
      EXPECT_EQ(back.bit_depth, tells_depth ? bit_depth : bit_depth > 8 ? 16 : 8) << format;
    }
  }
}

TEST(ImageFiles, PgmHeadersAreReadAsNetpbmDefinesThem) {
  const TemporaryFolder folder;
  const auto path = folder / "frame.pgm";
  write_content(path, "P5 # a comment\n# another\n2\t2 # and\r\n 4095\n" +
                          std::string("\x0F\xFF\x00\x01\x01\x00\x00\x23", 8));
  const kv::Frame frame = kv::open_frames(path, std::nullopt)->read(0);
  EXPECT_EQ(frame.samples, (std::vector<std::uint16_t>{4095, 1, 256, 35}));
  EXPECT_EQ(frame.bit_depth, 12);

  // The sample that follows the header looks like white space, and one like a comment.
  write_content(path, "P5 2 1 255\n\n#P5 1 2 100 ab");
  const auto reader = kv::open_frames(path, std::nullopt);
  ASSERT_EQ(reader->count(), 2u);
  EXPECT_EQ(reader->read(0).samples, (std::vector<std::uint16_t>{'\n', '#'}));
  EXPECT_EQ(reader->read(1).samples, (std::vector<std::uint16_t>{'a', 'b'}));
  EXPECT_EQ(reader->read(1).bit_depth, 7);
}

TEST(ImageFiles, DamagedPgmIsRefused) {
  const TemporaryFolder folder;
  const auto path = folder / "frame.pgm";
  const std::pair<const char*, const char*> cases[] = {
      {"P5 2 2 255\nabc", "truncated"},
      {"P5 2 2 65535\nabcdefg", "truncated"},
      {"P5 4294967295 4294967295 65535\nabcdefg", "truncated"},
      {"P5 99999999999 2 255\nabcd", "too large"},
      {"P5 2 2 65536\nabcdefgh", "maxval"},
      {"P5 2 2 0\nabcd", "maxval"},
      {"P5 -2 2 255\nabcd", "damaged"},
      {"P5 2 two 255\nabcd", "damaged"},
      {"P5 0 2 255\n", "1 or more"},
      {"P5 2 2 255", "header"},
      {"P5", "damaged"},
      {"P5 2 2 255\nabcdefgh", "other data"},
      {"P2 2 2 255\n1 2 3 4", "P2"},
      {"P6 2 2 255\nabcdefghijkl", "P6"},
  };
  for (const auto& [content, part] : cases) {
    write_content(path, content);
    EXPECT_NE(refusal_of(path).find(part), std::string::npos)
        << content << ": " << refusal_of(path);
  }
}

TEST(ImageFiles, RawFilesHoldWholeFrames) {
  const TemporaryFolder folder;
  const auto path = folder / "dump.bin";
  write_content(path, "abcdefghijkl");
  const auto reader = kv::open_frames(path, kv::RawShape{2, 1, 16});
  ASSERT_EQ(reader->count(), 3u);
  EXPECT_EQ(reader->read(2).samples,
            (std::vector<std::uint16_t>{'i' + 256 * 'j', 'k' + 256 * 'l'}));
  EXPECT_EQ(kv::open_frames(path, kv::RawShape{4, 3, 8})->read(0).samples[11], 'l');
  EXPECT_NE(refusal_of(path, kv::RawShape{5, 2, 8}).find("multiple of 10"), std::string::npos);
}

TEST(PendingFile, LeavesTheOldFileUntilPublished) {
  const TemporaryFolder folder;
  const auto path = folder / "plane.png";
  write_content(path, "old");
  {
    kv::PendingFile file(path);
    file.write("new", 3);
    file.close();
    EXPECT_EQ(content_of(path), "old");
  }
  EXPECT_EQ(content_of(path), "old");
  EXPECT_EQ(names_in(path.parent_path()).size(), 1u) << "an abandoned file stayed behind";

  kv::PendingFile file(path);
  file.write("new", 3);
  file.close();
  file.publish();
  EXPECT_EQ(content_of(path), "new");
  EXPECT_EQ(names_in(path.parent_path()).size(), 1u);
}

TEST(PendingFile, CannotBeMadeInAMissingFolder) {
  const TemporaryFolder folder;
  EXPECT_THROW(kv::PendingFile(folder / "missing" / "plane.png"), kv::Error);
}

TEST(ImageFiles, UnknownEndingsAreRefusedForWriting) {
  for (const char* name : {"frame", "frame.jpg", "frame.", ".png"}) {
    EXPECT_THROW(kv::format_for(name), kv::Error) << name;
  }
  EXPECT_EQ(kv::format_for("a.b/FRAME.PGM"), kv::ImageFormat::pgm);
}

}  // namespace
