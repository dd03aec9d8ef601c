#include <gtest/gtest.h>

#include <fstream>
#include <string>

#include "error_of.h"
#include "temporary_folder.h"
#include "toolkit/image_files/frame_reader.h"
#include "toolkit/image_files/image_writer.h"
#include "toolkit/image_files/pgm_file.h"

#if !defined(_WIN32)
#include <sys/resource.h>

#include "platform/process.h"
#endif

namespace {

using Samples = std::vector<std::uint16_t>;

std::string refusal_of(const std::filesystem::path& path,
                       const std::optional<kv::RawShape>& shape = std::nullopt) {
  return error_of([&] { kv::open_frames(path, shape)->read(0); });
}

TEST(ImageFiles, BringSamplesBackInEveryFormat) {
  const TemporaryFolder folder;
  auto formats = kv::plane_format_names();
  formats.emplace_back("raw");
  for (const std::string& format : formats) {
    for (const int bit_depth : {1, 8, 9, 12, 16}) {
      SCOPED_TRACE(format + " of " + std::to_string(bit_depth) + " bits");
      Samples samples(37 * 23);
      // A step that has no factor in common with the range reaches low and high bytes alike.
      for (std::size_t i = 0; i < samples.size(); ++i) {
        samples[i] = static_cast<std::uint16_t>(i * 40503 % (1u << bit_depth));
      }
      const auto path = folder / ("frame." + format);
      EXPECT_EQ(kv::extension_of(kv::format_for(path)), "." + format);
      written(path, [&](kv::PendingFile& file) {
        kv::write_grey(file, kv::format_for(path), {37, 23, bit_depth, samples});
      });
      std::optional<kv::RawShape> shape;
      if (format == "raw") shape = kv::RawShape{37, 23, bit_depth > 8 ? 16 : 8};

      const auto reader = kv::open_frames(path, shape);
      ASSERT_EQ(reader->count(), 1u);
      const kv::Frame back = reader->read(0);
      EXPECT_EQ(back.width, 37);
      EXPECT_EQ(back.height, 23);
      EXPECT_EQ(back.samples, samples);
      const bool depth_is_in_file = format == "pgm" || format == "tiff";
      EXPECT_EQ(back.bit_depth, depth_is_in_file ? bit_depth : bit_depth > 8 ? 16 : 8);
    }
  }
}

TEST(ImageFiles, NetpbmAndRawAreWrittenAsDefined) {
  const TemporaryFolder folder;
  const auto path = folder / "image";
  const Samples samples = {0x0102, 0x0304};
  const auto grey = [&](kv::ImageFormat format, int bit_depth) {
    return written(path, [&](kv::PendingFile& file) {
      kv::write_grey(file, format, {2, 1, bit_depth, samples});
    });
  };
  EXPECT_EQ(grey(kv::ImageFormat::pgm, 12), "P5\n2 1\n4095\n\x01\x02\x03\x04");
  EXPECT_EQ(grey(kv::ImageFormat::pgm, 8), "P5\n2 1\n255\n\x02\x04");
  EXPECT_EQ(grey(kv::ImageFormat::raw, 9), "\x02\x01\x04\x03");
  EXPECT_EQ(grey(kv::ImageFormat::raw, 8), "\x02\x04");
  kv::Picture colour(1, 2, 3);
  colour.bytes = {'a', 'b', 'c', 'd', 'e', 'f'};
  EXPECT_EQ(written(path, [&](auto& file) { kv::write_netpbm(file, colour); }),
            "P6\n1 2\n255\nabcdef");
  EXPECT_EQ(written(path,
                    [](auto& file) {
                      kv::write_netpbm(file, {1, 1, 1});
                    }),
            std::string("P5\n1 1\n255\n\0", 12));
}

TEST(ImageFiles, PgmHeadersAreReadAsNetpbmDefinesThem) {
  const TemporaryFolder folder;
  const auto path = folder / "frame.pgm";
  write_content(path, "P5 # a comment\n# another\n2\t2 # and\r\n 4095\n" +
                          std::string("\x0F\xFF\x00\x01\x01\x00\x00\x23", 8));
  const kv::Frame frame = kv::open_frames(path, std::nullopt)->read(0);
  EXPECT_EQ(frame.samples, (Samples{4095, 1, 256, 35}));
  EXPECT_EQ(frame.bit_depth, 12);

  // The sample that follows the header looks like white space, and one like a comment.
  write_content(path, "P5 2 1 255\n\n#P5 1 2 100 ab");
  const auto reader = kv::open_frames(path, std::nullopt);
  ASSERT_EQ(reader->count(), 2u);
  EXPECT_EQ(reader->read(0).samples, (Samples{'\n', '#'}));
  EXPECT_EQ(reader->read(1).samples, (Samples{'a', 'b'}));
  EXPECT_EQ(reader->read(1).bit_depth, 7);
}

TEST(ImageFiles, WhatIsNoFrameIsRefusedWithItsFault) {
  const TemporaryFolder folder;
  const auto path = folder / "frame";
  const std::pair<std::string, const char*> cases[] = {
      {"", "empty"},
      {"A letter, not a picture.\n", "neither PNG, TIFF nor PGM"},
      {"P8 2 2 255\nabcd", "neither PNG, TIFF nor PGM"},
      {"P2 2 2 255\n1 2 3 4", "P2"},
      {"P6 2 2 255\nabcdefghijkl", "P6"},
      {"P5 2 2 255\nabc", "truncated"},
      {"P5 2 2 65535\nabcdefg", "truncated"},
      {"P5 2 2 256\nabcdefg", "truncated"},
      {"P5 2 5 255\nabcd", "only 4 bytes"},
      {"P5 4294967295 4294967295 65535\nabcdefg", "truncated"},
      {"P5 4294967296 2 255\nabcd", "too large"},
      {"P5 2 2 65536\nabcdefgh", "maxval is 65536"},
      {"P5 2 2 0\nabcd", "maxval is 0"},
      {"P5 -2 2 255\nabcd", "header is damaged"},
      {"P5 2 two 255\nabcd", "header is damaged"},
      {"P5", "header is damaged"},
      {"P5 0 2 255\n", "width or height of 0"},
      {"P5 2 0 255\n", "width or height of 0"},
      {"P5 2 2 255", "ends within its header"},
      {"P5 2 2 255\nabcdefgh", "other data"},
  };
  for (const auto& [content, part] : cases) {
    write_content(path, content);
    EXPECT_PRED2(contains, refusal_of(path), part) << content;
  }
  std::filesystem::remove(path);
  EXPECT_PRED2(contains, refusal_of(path), "no such file");
  EXPECT_PRED2(contains, refusal_of(folder / ""), "folder");
}

TEST(ImageFiles, RawFilesHoldWholeFrames) {
  const TemporaryFolder folder;
  const auto path = folder / "dump.bin";
  write_content(path, "P5cdefghijkl");
  const auto reader = kv::open_frames(path, kv::RawShape{2, 1, 16});
  ASSERT_EQ(reader->count(), 3u);
  EXPECT_EQ(reader->read(2).samples, (Samples{'i' + 256 * 'j', 'k' + 256 * 'l'}));
  EXPECT_EQ(kv::open_frames(path, kv::RawShape{4, 3, 8})->read(0).samples[11], 'l');
  EXPECT_PRED2(contains, refusal_of(path, kv::RawShape{5, 2, 8}), "multiple of 10");
}

TEST(ImageFiles, SizesAndOffsetsMayNeedMoreThan32Bits) {
  constexpr std::uint64_t four_gigabytes = std::uint64_t{1} << 32;
  EXPECT_EQ(kv::pixel_count(65536, 65536), four_gigabytes);
  const TemporaryFolder folder;
  const auto path = folder / "sparse";
  const auto file_with_hole = [&](const std::string& start, const std::string& end) {
    write_content(path, start);
    std::filesystem::resize_file(path, start.size() + four_gigabytes);
    std::ofstream(path, std::ios::binary | std::ios::app) << end;
  };
  file_with_hole("", "abcd");
  EXPECT_EQ(kv::open_frames(path, kv::RawShape{2, 1, 16})->read(1 << 30).samples,
            (Samples{'a' + 256 * 'b', 'c' + 256 * 'd'}));
  file_with_hole("P5 65536 65536 255\n", "P5 2 1 255\nab");
  const auto reader = kv::open_frames(path, std::nullopt);
  EXPECT_PRED2(contains, error_of([&] { reader->read(0); }), "out of range");
  EXPECT_EQ(reader->read(1).samples, (Samples{'a', 'b'}));
}

TEST(Frame, IsOfASizeThatASensorCanHave) {
  constexpr std::uint64_t most = std::uint64_t{1} << 28;
  EXPECT_EQ(kv::make_frame(2, 3, 12).samples.size(), 6u);
  // The last one wraps around to 0 pixels in 64 bits.
  const std::pair<std::uint64_t, std::uint64_t> sizes[] = {
      {0, 2}, {2, 0}, {most / 2 + 1, 2}, {2, most / 2 + 1}, {most * 16, most * 16}};
  for (const auto& size : sizes) {
    EXPECT_PRED2(contains, error_of([&] { kv::make_frame(size.first, size.second, 8); }),
                 "out of range");
  }
  EXPECT_EQ(kv::count_samples_above_full_scale({2, 2, 10, {1023, 1024, 0, 65535}}), 2u);
}

TEST(PendingFile, LeavesTheOldFileUntilPublished) {
  const TemporaryFolder folder;
  const auto path = folder / "plane.png";
  write_content(path, "old");
  for (const bool published : {false, true}) {
    {
      kv::PendingFile file(path);
      file.write("new", 3);
      file.close();
      EXPECT_EQ(content_of(path), "old");
      if (published) file.publish();
    }
    EXPECT_EQ(content_of(path), published ? "new" : "old");
    EXPECT_EQ(names_in(path.parent_path()).size(), 1u) << "an abandoned file stayed behind";
  }
  EXPECT_PRED2(contains, error_of([&] { kv::PendingFile(folder / "missing" / "plane.png"); }),
               "cannot write");
}

#if !defined(_WIN32)
void limit_file_size(rlim_t size) {
  rlimit limit{};
  getrlimit(RLIMIT_FSIZE, &limit);
  limit.rlim_cur = std::min(size, limit.rlim_max);
  setrlimit(RLIMIT_FSIZE, &limit);
}

// What fits the buffer fails when the file is closed, more of it before.
TEST(PendingFile, ReportsWritesThatFailAtAnyTime) {
  const TemporaryFolder folder;
  kv::platform::ignore_file_size_signal();
  for (const std::size_t size : {std::size_t{1}, std::size_t{1} << 20}) {
    for (const bool space_at_the_end : {false, true}) {
      if (size == 1 && space_at_the_end) continue;
      kv::PendingFile file(folder / "plane.png");
      limit_file_size(0);
      std::fwrite(std::string(size, 'x').data(), 1, size, file.stream());
      if (space_at_the_end) limit_file_size(RLIM_INFINITY);
      const std::string error = error_of([&] { file.close(); });
      limit_file_size(RLIM_INFINITY);
      EXPECT_PRED2(contains, error, "cannot write");
    }
  }
}
#endif

TEST(ImageFiles, UnknownEndingsAreRefusedForWriting) {
  for (const char* name : {"frame", "frame.jpg", "frame.", ".png"}) {
    EXPECT_PRED2(contains, error_of([&] { kv::format_for(name); }), ".pgm, .raw") << name;
  }
  EXPECT_EQ(kv::format_for("a.b/FRAME.PGM"), kv::ImageFormat::pgm);
  EXPECT_EQ(kv::format_named("tif"), kv::ImageFormat::tiff);
}

}  // namespace
