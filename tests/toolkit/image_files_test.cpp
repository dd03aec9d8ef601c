// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "kv/image_files.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string>

#include "error_of.h"
#include "temporary_folder.h"

#if !defined(_WIN32)
#include <sys/resource.h>

#include "platform/process.h"
#endif

using namespace kv::polarization;

namespace {

using Samples = Buffer<std::uint16_t>;

/// A step that has no factor in common with the range reaches low and high bytes alike.
Frame varied_frame(int width, int height, int bit_depth) {
  Frame frame = make_frame(static_cast<unsigned>(width), static_cast<unsigned>(height), bit_depth);
  for (std::size_t i = 0; i < frame.samples.size(); ++i) {
    frame.samples[i] = static_cast<std::uint16_t>((i + 7) * 40503 % (1u << bit_depth));
  }
  return frame;
}

/// What cannot seek, and comes in small pieces.
class Pipe : public std::streambuf {
 public:
  explicit Pipe(std::string content) : content_(std::move(content)) {}

 private:
  int_type underflow() override {
    if (position_ == content_.size()) return traits_type::eof();
    char* start = content_.data() + position_;
    position_ += std::min<std::size_t>(7, content_.size() - position_);
    setg(start, start, content_.data() + position_);
    return traits_type::to_int_type(*start);
  }

  std::string content_;
  std::size_t position_ = 0;
};

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
  Frame back;
  for (const ImageFormatTraits& format : image_formats()) {
    if (!format.available()) continue;
    path_ = folder_ / ("frame" + std::string(format.endings[0]));
    EXPECT_EQ(format_for(path_), format.format);
    for (const auto& [width, height] : {std::pair{37, 23}, {1, 1}, {1 << 20, 1}, {700, 1600}}) {
      constexpr std::optional<Compression> usual;
      for (const auto& [bit_depth, compression] : {std::pair{1, std::optional(Compression::none)},
                                                   {8, usual},
                                                   {8, Compression::small},
                                                   {9, Compression::none},
                                                   {12, Compression::fast},
                                                   {16, Compression::small},
                                                   {16, usual}}) {
        SCOPED_TRACE(std::string(format.name) + " of " + std::to_string(bit_depth) + " bits, " +
                     std::to_string(width) + " columns");
        const Frame frame = varied_frame(width, height, bit_depth);
        save_image(path_, grey_image(frame),
                   {.title = "A title\nof \xC3\xA4", .compression = compression});
        const int stored_bits = bit_depth > 8 ? 16 : 8;
        const PixelFormat raw = bit_depth > 8 ? PixelFormat::mono16 : PixelFormat::mono8;
        const auto reader = format.has_header ? open() : open(RawShape{width, height, raw});
        ASSERT_EQ(reader->count(), 1u);
        reader->read(0, back);
        EXPECT_EQ(back.width, width);
        EXPECT_EQ(back.height, height);
        EXPECT_TRUE(back.samples == frame.samples);
        const bool depth_is_in_file = format.name == "pgm" || format.name == "tiff";
        EXPECT_EQ(back.bit_depth, depth_is_in_file ? bit_depth : stored_bits);
        EXPECT_TRUE(reader->notes().empty());
        EXPECT_EQ(kind_of([&] { reader->read(1); }), FaultKind::argument);
      }
    }
    const bool keeps_title = format.name == "png" || format.name == "tiff" || format.name == "pgm";
    EXPECT_EQ(contains(content_of(path_), "of \xC3\xA4"), keeps_title) << format.name;
  }
}

TEST_F(ImageFiles, DamagedAnywhereAreRefusedOrReadButNothingElse) {
  for (const ImageFormatTraits& format : image_formats()) {
    if (!format.available() || !format.has_header) continue;
    path_ = folder_ / ("frame" + std::string(format.endings[0]));
    const Frame frame = varied_frame(5, 3, 12);
    save_image(path_, grey_image(frame));
    const std::string whole = content_of(path_);
    Frame back;
    const auto read = [&back](const std::string& content) {
      open_frames(std::as_bytes(std::span(content)))->read(0, back);
    };
    for (std::size_t size = 8; size < whole.size(); ++size) {
      const std::string part = whole.substr(0, size);
      const auto kind = kind_of([&] { read(part); });
      // libtiff does without the last four bytes, which say that no page follows.
      EXPECT_TRUE(kind ? *kind == FaultKind::file
                       : format.name == "tiff" && back.samples == frame.samples)
          << format.name << size;
    }
    for (std::size_t i = 0; i < whole.size(); ++i) {
      for (const char value : {'\0', '\1', '\x7F', '\x80', '\xFF'}) {
        std::string changed = whole;
        changed[i] = value;
        // Anything but a Fault fails the test.
        const auto kind = kind_of([&] { read(changed); });
        EXPECT_TRUE(!kind || *kind == FaultKind::file || *kind == FaultKind::unsupported)
            << format.name << ", byte " << i << " as " << int{value};
      }
    }
  }
}

TEST_F(ImageFiles, AreReadFromStreamsMemoryAndPipes) {
  const std::string two = "P5 2 1 255\nabP5 2 1 255\ncd";
  write_content(path_, two);
  std::istringstream stream("before" + two);
  stream.seekg(6);
  Pipe pipe(two);
  std::istream piped(&pipe);
  const std::unique_ptr<FrameReader> readers[] = {
      open(), open_frames(stream), open_frames(std::as_bytes(std::span(two))), open_frames(piped)};
  for (const auto& reader : readers) {
    ASSERT_EQ(reader->count(), 2u);
    EXPECT_EQ(reader->read(0).samples, (Samples{'a', 'b'}));
    Frame frame;
    EXPECT_TRUE(reader->read_next(frame));
    EXPECT_EQ(frame.samples, (Samples{'c', 'd'}));
    EXPECT_FALSE(reader->read_next(frame));
  }
}

/// A disk that gives a file's head, and fails at its pixels.
class BrokenDisk : public std::stringbuf {
 public:
  using std::stringbuf::stringbuf;

 private:
  std::streamsize xsgetn(char* data, std::streamsize size) override {
    if (size == 40'000) throw std::runtime_error("of the stream, which tells nobody");
    return std::stringbuf::xsgetn(data, size);
  }
};

TEST_F(ImageFiles, FailedReadingIsNotTakenForAShortFile) {
  BrokenDisk disk("P5 200 200 255\n" + std::string(40'000, 'x'));
  std::istream stream(&disk);
  EXPECT_PRED2(contains, error_of([&] { open_frames(stream)->read(0); }), "reading failed");
}

TEST_F(ImageFiles, RawFramesComeFromPipesOneByOne) {
  for (const PixelFormat format : {PixelFormat::mono12p, PixelFormat::mono16}) {
    const std::size_t size = stored_bytes(format, 3);
    Pipe pipe(std::string(2 * size, '\x11') + "xx");
    std::istream stream(&pipe);
    const auto reader = open_frames(stream, RawShape{3, 1, format});
    EXPECT_EQ(kind_of([&] { reader->count(); }), FaultKind::state);
    EXPECT_EQ(kind_of([&] { reader->read(0); }), FaultKind::state);
    Frame frame;
    for (int i = 0; i < 2; ++i) {
      ASSERT_TRUE(reader->read_next(frame));
      const std::uint16_t sample = format == PixelFormat::mono16 ? 0x1111 : 0x111;
      EXPECT_EQ(frame.samples, (Samples{sample, sample, sample}));
    }
    EXPECT_PRED2(contains, error_of([&] { reader->read_next(frame); }), "after 2 bytes");
    EXPECT_FALSE(reader->read_next(frame));
  }
}

// Three samples of 12 bits take four and a half bytes: each frame begins with a byte of its own.
TEST_F(ImageFiles, RawStacksArePackedFrameByFrame) {
  write_content(path_, std::string("\xBC\x3A\x12\x56\x04\x01\x20\x00\x03\x00", 10));
  const auto reader = open(RawShape{1, 3, PixelFormat::mono12p});
  ASSERT_EQ(reader->count(), 2u);
  EXPECT_EQ(reader->read(0).samples, (Samples{0xABC, 0x123, 0x456}));
  EXPECT_EQ(reader->read(1).samples, (Samples{1, 2, 3}));
  EXPECT_EQ(reader->read(1).bit_depth, 12);
  EXPECT_PRED2(contains, refusal(RawShape{2, 2, PixelFormat::mono12p}), "multiple of 6");
  EXPECT_PRED2(contains, refusal(RawShape{0, 2, PixelFormat::mono8}), "0 x 2");
}

TEST_F(ImageFiles, PgmIsAsNetpbmDefinesIt) {
  const auto picture = [this](int channels, const std::string& bytes, const std::string& title) {
    Picture colour(1, 2, channels);
    colour.bytes = std::vector<std::uint8_t>(bytes.begin(), bytes.end());
    save_image(folder_ / "picture.pnm", colour, {title});
    return content_of(folder_ / "picture.pnm");
  };
  EXPECT_EQ(picture(3, "abcdef", ""), "P6\n1 2\n255\nabcdef");
  EXPECT_EQ(picture(1, "ab", "a\nb"), "P5\n# a b\n1 2\n255\nab");

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
  EXPECT_EQ(kind_of([this] { open(); }), FaultKind::file);
  struct Case {
    FaultKind kind;
    std::string content;
    const char* part;
  };
  const Case cases[] = {
      {FaultKind::file, "", "empty"},
      {FaultKind::unsupported, "P8 2 2 255\nabcd", "of no known format; frames are read from"},
      {FaultKind::unsupported, "P2 2 2 255\n1 2 3 4", "P2"},
      {FaultKind::file, "P5 2 2 255\nabc", "truncated"},
      {FaultKind::file, "P5 2 2 256\nabcdefg", "truncated"},
      {FaultKind::file, "P5 2 5 255\nabcd", "only 4 bytes"},
      {FaultKind::file, "P5 2147549185 4294836226 65535\nabcd", "truncated"},  // 4 bytes and 2^64
      {FaultKind::file, "P5 4294967296 2 255\nabcd", "too large"},
      {FaultKind::file, "P5 2 2 65536\nabcdefgh", "maxval is 65536"},
      {FaultKind::file, "P5 2 2 0\nabcd", "maxval is 0"},
      {FaultKind::file, "P5 2 two 255\nabcd", "header is damaged"},
      {FaultKind::file, "P5", "header is damaged"},
      {FaultKind::file, "P5 0 2 255\n", "width or height of 0"},
      {FaultKind::file, "P5 2 0 255\n", "width or height of 0"},
      {FaultKind::file, "P5 2 2 255", "ends within its header"},
      {FaultKind::file, "P5 2 2 255\nabcdefgh", "other data"},
  };
  for (const auto& [kind, content, part] : cases) {
    write_content(path_, content);
    EXPECT_PRED2(contains, refusal(), part) << content;
    EXPECT_EQ(kind_of([this] { open()->read(0); }), kind) << content;
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
  EXPECT_EQ(open(RawShape{2, 1, PixelFormat::mono16})->read(1 << 30).samples,
            (Samples{'P' + 256 * '5', 'c' + 256 * 'd'}));
  EXPECT_PRED2(contains, refusal(RawShape{5, 3, PixelFormat::mono8}), "multiple of 15");
  file_with_hole("P5 65536 65536 255\n", "P5 2 1 255\nab");
  EXPECT_PRED2(contains, refusal(), "larger than any sensor");
  EXPECT_EQ(kind_of([this] { open()->read(0); }), FaultKind::file);
  EXPECT_EQ(open()->read(1).samples, (Samples{'a', 'b'}));
}

TEST_F(ImageFiles, FormatsHaveNamesAndEndings) {
  for (const char* name : {"frame", "frame.jpg", "frame.", ".png"}) {
    EXPECT_PRED2(contains, error_of([&] { format_for(name); }), ".pgm, .npy, .raw") << name;
    EXPECT_EQ(kind_of([&] { format_for(name); }), FaultKind::argument) << name;
  }
  EXPECT_EQ(format_for("a.b/FRAME.PGM"), ImageFormat::pgm);
  EXPECT_EQ(format_named("tif"), ImageFormat::tiff);
  EXPECT_EQ(format_of_content("/"), std::nullopt);
  EXPECT_EQ(format_named("NPY"), ImageFormat::npy);
  EXPECT_EQ(ending_of(ImageFormat::pgm, ImageKind::picture), ".pnm");
  for (const ImageFormatTraits& traits : image_formats()) {
    EXPECT_EQ(&traits_of(traits.format), &traits);
    EXPECT_EQ(traits.available(), traits.reads && traits.writes(ImageKind::grey)) << traits.name;
  }
}

TEST_F(ImageFiles, ImagesThatCannotBeWrittenAreRefusedBefore) {
  const Samples samples = {1, 2, 3, 300};
  const std::vector<float> floats(4);
  const auto refused = [this](ImageFormat format, const auto& image) {
    PendingFile file(path_);
    return kind_of([&] { write_image(file, format, image); });
  };
  for (const ImageFormatTraits& traits : image_formats()) {
    const ImageFormat format = traits.format;
    EXPECT_EQ(refused(format, GreyImage{2, 3, 16, samples}), FaultKind::argument);
    EXPECT_EQ(refused(format, GreyImage{-2, -2, 16, samples}), FaultKind::argument);
    EXPECT_EQ(refused(format, GreyImage{2, 2, 17, samples}), FaultKind::argument);
    EXPECT_EQ(refused(format, GreyImage{2, 2, 8, samples}), FaultKind::argument);
    EXPECT_EQ(refused(format, FloatImage{2, 2, 2, floats}), FaultKind::argument);
    EXPECT_EQ(refused(format, Picture(1, 1, 2)), FaultKind::argument);
    const bool writes = traits.writes(ImageKind::floats);
    EXPECT_EQ(refused(format, FloatImage{2, 1, 2, floats}),
              writes ? std::nullopt : std::optional(FaultKind::unsupported));
  }
  EXPECT_TRUE(names_in(path_.parent_path()).empty());
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
