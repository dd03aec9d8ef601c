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

using namespace kv::polarization;
#endif

namespace {

using Samples = Buffer<std::uint16_t>;

class ImageFiles : public testing::Test {
 protected:
  auto open(const std::optional<RawShape>& shape = std::nullopt) const {
    return open_frames(path_, shape);
  }
  std::string refusal(const std::optional<RawShape>& shape = std::nullopt) const {
    return error_of([&] { open(shape)->read(0); });
  }

  TemporaryFolder folder_;
  std::filesystem::path path_ = folder_ / "frame";
};

TEST_F(ImageFiles, BringSamplesBackInEveryFormat) {
  auto formats = plane_format_names();
  formats.emplace_back("raw");
  for (const std::string& format : formats) {
    path_ = folder_ / ("frame." + format);
    EXPECT_EQ(extension_of(format_for(path_)), "." + format);
    for (const int bit_depth : {1, 8, 9, 12, 16}) {
      SCOPED_TRACE(format + " of " + std::to_string(bit_depth) + " bits");
      Samples samples(37 * 23);
      // A step that has no factor in common with the range reaches low and high bytes alike.
      for (std::size_t i = 0; i < samples.size(); ++i) {
        samples[i] = static_cast<std::uint16_t>(i * 40503 % (1u << bit_depth));
      }
      written(path_, [&](PendingFile& file) {
        write_grey(file, format_for(path_), {37, 23, bit_depth, samples});
      });
      const int stored_bits = bit_depth > 8 ? 16 : 8;
      const auto reader = format == "raw" ? open(RawShape{37, 23, stored_bits}) : open();
      ASSERT_EQ(reader->count(), 1u);
      const Frame back = reader->read(0);
      EXPECT_EQ(back.width, 37);
      EXPECT_EQ(back.height, 23);
      EXPECT_EQ(back.samples, samples);
      const bool depth_is_in_file = format == "pgm" || format == "tiff";
      EXPECT_EQ(back.bit_depth, depth_is_in_file ? bit_depth : stored_bits);
    }
  }
}

TEST_F(ImageFiles, PgmIsAsNetpbmDefinesIt) {
  const auto picture = [this](int channels, const std::string& bytes) {
    Picture colour(1, 2, channels);
    colour.bytes.assign(bytes.begin(), bytes.end());
    return written(path_, [&](auto& file) { write_netpbm(file, colour); });
  };
  EXPECT_EQ(picture(3, "abcdef"), "P6\n1 2\n255\nabcdef");
  EXPECT_EQ(picture(1, "ab"), "P5\n1 2\n255\nab");

  // The sample that follows a header may look like white space, and one like a comment.
  write_content(path_, "P5 # a comment\n# another\n2\t2 # and\r\n 4095\n" +
                           std::string("\x0F\xFF\x00\x01\x01\x00\x00\x23", 8) +
                           "P5 2 1 255\n\n#P5 1 2 100 ab");
  const std::pair<int, Samples> frames[] = {
      {12, {4095, 1, 256, 35}}, {8, {'\n', '#'}}, {7, {'a', 'b'}}};
  const auto reader = open();
  ASSERT_EQ(reader->count(), 3u);
  for (std::size_t i = 0; i < 3; ++i) {
    const Frame frame = reader->read(i);
    EXPECT_EQ(frame.bit_depth, frames[i].first);
    EXPECT_EQ(frame.samples, frames[i].second);
  }
}

TEST_F(ImageFiles, WhatIsNoFrameIsRefusedWithItsFault) {
  EXPECT_PRED2(contains, refusal(), "no such file");
  const std::pair<std::string, const char*> cases[] = {
      {"", "empty"},
      {"P8 2 2 255\nabcd", "neither PNG, TIFF nor PGM"},
      {"P2 2 2 255\n1 2 3 4", "P2"},
      {"P5 2 2 255\nabc", "truncated"},
      {"P5 2 2 256\nabcdefg", "truncated"},
      {"P5 2 5 255\nabcd", "only 4 bytes"},
      {"P5 2147549185 4294836226 65535\nabcd", "truncated"},  // 4 bytes and 2^64
      {"P5 4294967296 2 255\nabcd", "too large"},
      {"P5 2 2 65536\nabcdefgh", "maxval is 65536"},
      {"P5 2 2 0\nabcd", "maxval is 0"},
      {"P5 2 two 255\nabcd", "header is damaged"},
      {"P5", "header is damaged"},
      {"P5 0 2 255\n", "width or height of 0"},
      {"P5 2 0 255\n", "width or height of 0"},
      {"P5 2 2 255", "ends within its header"},
      {"P5 2 2 255\nabcdefgh", "other data"},
  };
  for (const auto& [content, part] : cases) {
    write_content(path_, content);
    EXPECT_PRED2(contains, refusal(), part) << content;
  }
}

TEST_F(ImageFiles, SizesAndOffsetsMayNeedMoreThan32Bits) {
  constexpr std::uint64_t four_gigabytes = std::uint64_t{1} << 32;
  EXPECT_EQ(pixel_count(65536, 65536), four_gigabytes);
  const auto file_with_hole = [this](const std::string& start, const std::string& end) {
    write_content(path_, start);
    std::filesystem::resize_file(path_, start.size() + four_gigabytes);
    std::ofstream(path_, std::ios::binary | std::ios::app) << end;
  };
  file_with_hole("", "P5cd");  // a raw shape goes before what the content looks like
  EXPECT_EQ(open(RawShape{2, 1, 16})->read(1 << 30).samples,
            (Samples{'P' + 256 * '5', 'c' + 256 * 'd'}));
  EXPECT_PRED2(contains, refusal(RawShape{5, 3, 8}), "multiple of 15");
  file_with_hole("P5 65536 65536 255\n", "P5 2 1 255\nab");
  EXPECT_PRED2(contains, refusal(), "larger than any sensor");
  EXPECT_EQ(open()->read(1).samples, (Samples{'a', 'b'}));
}

TEST_F(ImageFiles, UnknownEndingsAreRefusedForWriting) {
  for (const char* name : {"frame", "frame.jpg", "frame.", ".png"}) {
    EXPECT_PRED2(contains, error_of([&] { format_for(name); }), ".pgm, .raw") << name;
  }
  EXPECT_EQ(format_for("a.b/FRAME.PGM"), ImageFormat::pgm);
  EXPECT_EQ(format_named("tif"), ImageFormat::tiff);
}

TEST(Frame, IsOfASizeThatASensorCanHave) {
  constexpr std::uint64_t most = std::uint64_t{1} << 28;
  // The last two wrap around to 0 pixels in 64 bits.
  const std::pair<std::uint64_t, std::uint64_t> sizes[] = {
      {0, 2}, {2, 0}, {most / 2 + 1, 2}, {2, most / 2 + 1}, {most << 34, 4}, {4, most << 34}};
  for (const auto& size : sizes) {
    EXPECT_PRED2(contains, error_of([&] { make_frame(size.first, size.second, 8); }),
                 size.first == 0 || size.second == 0 ? "is empty" : "larger than any sensor");
  }
  EXPECT_EQ(count_samples_above_full_scale({2, 2, 10, {1023, 1024, 0, 65535}}), 2u);
}

TEST_F(ImageFiles, OldFilesStayUntilNewOnesArePublished) {
  write_content(path_, "old");
  {
    PendingFile abandoned(path_);
    abandoned.write("new", 3);
    abandoned.close();
  }
  EXPECT_EQ(content_of(path_), "old");
  EXPECT_EQ(written(path_, [](auto& file) { file.write("new", 3); }), "new");
  EXPECT_EQ(names_in(path_.parent_path()), std::vector<std::string>{"frame"});
}

#if !defined(_WIN32)
void limit_file_size(rlim_t size) {
  rlimit limit{};
  getrlimit(RLIMIT_FSIZE, &limit);
  limit.rlim_cur = std::min(size, limit.rlim_max);
  setrlimit(RLIMIT_FSIZE, &limit);
}

// What fits the buffer fails when the file is closed; more fails before, though there be space when
// the file is closed.
TEST_F(ImageFiles, WritesThatFailAtAnyTimeAreReported) {
  kv::platform::ignore_file_size_signal();
  for (const std::size_t size : {std::size_t{1}, std::size_t{1} << 20}) {
    PendingFile file(path_);
    limit_file_size(0);
    std::fwrite(std::string(size, 'x').data(), 1, size, file.stream());
    if (size > 1) limit_file_size(RLIM_INFINITY);
    const std::string error = error_of([&] { file.close(); });
    limit_file_size(RLIM_INFINITY);
    EXPECT_PRED2(contains, error, "cannot write");
  }
}
#endif

}  // namespace
