// PNG and TIFF files of kinds that the toolkit never writes, and what libpng and libtiff find in
// those that it writes.
#include <gtest/gtest.h>
#include <png.h>
#include <tiffio.h>
#include <zlib.h>

#include <algorithm>
#include <map>
#include <numeric>

#include "error_of.h"
#include "temporary_folder.h"
#include "toolkit/image_files/frame_reader.h"
#include "toolkit/image_files/image_writer.h"

using namespace kv::polarization;

namespace {

using Samples = Buffer<std::uint16_t>;

struct PngKind {
  int width = 2, height = 2, bits = 8, color = PNG_COLOR_TYPE_GRAY, interlace = 0;
  std::string rows = {0, 'a', 'b', 0, 'c', 'd'};  ///< each after the number of its filter
};

/// A PNG put together by hand.
std::string png_file(const PngKind& kind) {
  const auto number = [](auto value) {
    return std::string{static_cast<char>(value >> 24), static_cast<char>(value >> 16),
                       static_cast<char>(value >> 8), static_cast<char>(value)};
  };
  const auto chunk = [&](const std::string& content) {  // begins with the chunk's name
    const auto size = static_cast<uInt>(content.size());
    return number(size - 4) + content +
           number(crc32(0, reinterpret_cast<const Bytef*>(content.data()), size));
  };
  std::string data(100, '\0');
  uLongf size = data.size();
  compress(reinterpret_cast<Bytef*>(data.data()), &size,
           reinterpret_cast<const Bytef*>(kind.rows.data()), kind.rows.size());
  const std::string kinds = {static_cast<char>(kind.bits), static_cast<char>(kind.color), 0, 0,
                             static_cast<char>(kind.interlace)};
  return "\x89PNG\r\n\x1A\n" + chunk("IHDR" + number(kind.width) + number(kind.height) + kinds) +
         (kind.color == PNG_COLOR_TYPE_PALETTE ? chunk("PLTEabcdef") : "") +
         chunk("IDAT" + data.substr(0, size)) + chunk("IEND");
}

/// Values of a TIFF page's fields, by their tags.
using TiffPage = std::map<std::uint16_t, std::vector<std::uint32_t>>;

/// Where a TIFF's samples begin, behind the directories of its pages. Those of a palette need more,
/// but are not read.
constexpr std::uint32_t kSamples = 384;

/// A page of 4 x 2 samples in one strip, with other fields in place of the plain ones.
TiffPage tiff_page(std::uint32_t bits, TiffPage fields = {}) {
  fields.merge(TiffPage{{TIFFTAG_IMAGEWIDTH, {4}},
                        {TIFFTAG_IMAGELENGTH, {2}},
                        {TIFFTAG_BITSPERSAMPLE, {bits}},
                        {TIFFTAG_PHOTOMETRIC, {PHOTOMETRIC_MINISBLACK}},
                        {TIFFTAG_STRIPOFFSETS, {kSamples}},
                        {TIFFTAG_STRIPBYTECOUNTS, {bits}}});
  return fields;
}

/// A TIFF put together by hand.
std::string tiff_file(const std::vector<TiffPage>& pages,
                      const std::string& samples = "abcdefghijklmnop", bool big_endian = false) {
  const auto number = [big_endian](std::size_t size, std::size_t value) {
    std::string bytes;
    for (std::size_t i = 0; i < size; ++i) bytes += static_cast<char>(value >> 8 * i);
    if (big_endian) std::reverse(bytes.begin(), bytes.end());
    return bytes;
  };
  std::string file = (big_endian ? "MM" : "II") + number(2, 42) + number(4, 8);
  for (const TiffPage& page : pages) {
    const std::size_t arrays_start = file.size() + 6 + 12 * page.size();
    std::string fields;
    std::string arrays;
    for (const auto& [tag, values] : page) {
      const std::size_t array = arrays_start + arrays.size();
      const bool is_array = values.size() > 1;
      fields += number(2, tag) + number(2, TIFF_LONG) + number(4, values.size()) +
                number(4, is_array ? array : values[0]);
      for (std::size_t i = 0; is_array && i < values.size(); ++i) arrays += number(4, values[i]);
    }
    const std::size_t next = &page == &pages.back() ? 0 : arrays_start + arrays.size();
    file += number(2, page.size()) + fields + number(4, next) + arrays;
  }
  file.resize(std::max<std::size_t>(file.size(), kSamples));
  return file + samples;
}

class ForeignImages : public testing::Test {
 protected:
  Frame read(const std::string& content) const {
    write_content(path_, content);
    return open_frames(path_, std::nullopt)->read(0);
  }
  void expect_refusal(const std::string& content, const std::string& part) const {
    EXPECT_PRED2(contains, error_of([&] { read(content); }), part) << content.size();
  }

  TemporaryFolder folder_;
  std::filesystem::path path_ = folder_ / "frame";
};

TEST_F(ForeignImages, AreReadHoweverTheyAreStored) {
  const std::string words("\1\2\3\4\5\6\7\10\11\12\13\14\15\16\17\20", 16);
  const Samples letters = {'a', 'b', 'c', 'd', 'e', 'f', 'g', 'h'};
  const std::pair<std::string, Samples> cases[] = {
      {png_file({}), {'a', 'b', 'c', 'd'}},
      {png_file({.height = 1, .bits = 16, .rows = {0, 1, 2, 3, 4}}), {0x0102, 0x0304}},
      {png_file({.height = 1, .interlace = 1, .rows = {0, 'a', 0, 'b'}}), {'a', 'b'}},
      {tiff_file({tiff_page(8)}), letters},
      {tiff_file({tiff_page(8, {{TIFFTAG_PHOTOMETRIC, {PHOTOMETRIC_CFA}}})}), letters},
      {tiff_file({tiff_page(16)}, words),
       {0x0201, 0x0403, 0x0605, 0x0807, 0x0A09, 0x0C0B, 0x0E0D, 0x100F}},
      {tiff_file({tiff_page(16)}, words, true),
       {0x0102, 0x0304, 0x0506, 0x0708, 0x090A, 0x0B0C, 0x0D0E, 0x0F10}},
  };
  for (const auto& [content, samples] : cases) EXPECT_EQ(read(content).samples, samples);
}

// 20 x 18 pixels in tiles of 16 x 16.
TEST_F(ForeignImages, TilesArePutTogether) {
  const auto byte_at = [](int row, int column) { return 7 * row + 3 * column; };
  for (const std::uint32_t bytes : {1u, 2u}) {
    std::string tiles;
    for (int i = 0; i < 4 * 256; ++i) {
      const int row = i / 512 * 16 + i / 16 % 16;
      const int column = i / 256 % 2 * 16 + i % 16;
      tiles += std::string(bytes, static_cast<char>(byte_at(row, column)));
    }
    TiffPage page = tiff_page(8 * bytes, {{TIFFTAG_IMAGEWIDTH, {20}},
                                          {TIFFTAG_IMAGELENGTH, {18}},
                                          {TIFFTAG_TILEWIDTH, {16}},
                                          {TIFFTAG_TILELENGTH, {16}},
                                          {TIFFTAG_TILEBYTECOUNTS, std::vector(4, 256 * bytes)}});
    for (std::uint32_t i = 0; i < 4; ++i) {
      page[TIFFTAG_TILEOFFSETS].push_back(kSamples + i * 256 * bytes);
    }
    page.erase(TIFFTAG_STRIPOFFSETS);
    page.erase(TIFFTAG_STRIPBYTECOUNTS);
    const std::string file = tiff_file({page}, tiles);
    Samples expected(18 * 20);
    for (std::size_t i = 0; i < expected.size(); ++i) {
      const int byte = byte_at(static_cast<int>(i / 20), static_cast<int>(i % 20));
      expected[i] = static_cast<std::uint16_t>(bytes == 1 ? byte : 257 * byte);
    }
    EXPECT_EQ(read(file).samples, expected);
    expect_refusal(file.substr(0, file.size() - 1), "damaged or truncated");
  }
}

TEST_F(ForeignImages, EveryTiffPageIsAFrame) {
  write_content(path_, tiff_file({tiff_page(8), tiff_page(8, {{TIFFTAG_SAMPLESPERPIXEL, {3}}}),
                                  tiff_page(16, {{TIFFTAG_MAXSAMPLEVALUE, {1023}}}),
                                  tiff_page(8, {{TIFFTAG_STRIPOFFSETS, {kSamples + 8}},
                                                {TIFFTAG_MAXSAMPLEVALUE, {4095}}})}));
  const auto reader = open_frames(path_, std::nullopt);
  ASSERT_EQ(reader->count(), 4u);
  EXPECT_EQ(reader->read(2).bit_depth, 10);
  EXPECT_EQ(reader->read(3).bit_depth, 8);
  EXPECT_EQ(reader->read(3).samples[7], 'p');
  EXPECT_PRED2(contains, error_of([&] { reader->read(1); }), "3 channels");
  EXPECT_EQ(reader->read(0).samples[7], 'h');
}

TEST_F(ForeignImages, OfOtherKindsAreRefusedWithTheirKind) {
  // In 32 bits the products of the large sides would pass for the size of a frame.
  const std::pair<PngKind, const char*> pngs[] = {
      {{.color = PNG_COLOR_TYPE_RGB}, "RGB colour of 8"},
      {{.bits = 16, .color = PNG_COLOR_TYPE_RGBA}, "RGB colour of 16"},
      {{.color = PNG_COLOR_TYPE_PALETTE}, "palette"},
      {{.color = PNG_COLOR_TYPE_GRAY_ALPHA}, "alpha"},
      {{.bits = 4}, "grey of 4 bits"},
      {{.width = 65536, .height = 65537}, "65536 x 65537 pixels is larger than any sensor"},
  };
  for (const auto& [kind, part] : pngs) expect_refusal(png_file(kind), part);
  const std::pair<TiffPage, const char*> tiffs[] = {
      {tiff_page(8, {{TIFFTAG_PHOTOMETRIC, {PHOTOMETRIC_PALETTE}},
                     {TIFFTAG_COLORMAP, std::vector<std::uint32_t>(768)}}),
       "palette"},
      {tiff_page(4), "4 bits"},
      {tiff_page(32, {{TIFFTAG_SAMPLEFORMAT, {SAMPLEFORMAT_IEEEFP}}}), "float"},
      {tiff_page(16, {{TIFFTAG_SAMPLEFORMAT, {SAMPLEFORMAT_INT}}}), "signed"},
      {tiff_page(8, {{TIFFTAG_PHOTOMETRIC, {PHOTOMETRIC_MINISWHITE}}}), "plain grey"},
      {tiff_page(8, {{TIFFTAG_IMAGEWIDTH, {65537}}, {TIFFTAG_IMAGELENGTH, {65536}}}),
       "65537 x 65536 pixels is larger than any sensor"},
  };
  for (const auto& [page, part] : tiffs) expect_refusal(tiff_file({page}), part);
}

TEST_F(ForeignImages, CutAnywhereAreRefused) {
  const std::string tiff = tiff_file({tiff_page(8)}, "abcdefgh");
  for (const std::string& whole : {png_file({}), tiff}) {
    for (std::size_t size = 8; size < whole.size(); ++size) {
      expect_refusal(whole.substr(0, size), "damaged or truncated");
    }
  }
  std::string lost_page = tiff;
  lost_page[8 + 2 + 6 * 12 + 2] = '\x7F';  // a second page is announced, beyond the end
  expect_refusal(lost_page, "damaged or truncated");
}

TEST_F(ForeignImages, NormalizedStokesIsAnOrdinaryFloatTiff) {
  const std::vector<float> pairs = {0.5f, -0.25f, -1, 1, 0, 0.125f, 0.75f, -0.5f};
  EXPECT_EQ(float_pairs_extension(), ".tiff");
  written(path_, [&](auto& file) { write_float_pairs(file, 2, 2, pairs); });
  TIFF* tiff = TIFFOpen(path_.string().c_str(), "r");
  ASSERT_NE(tiff, nullptr);
  std::uint16_t channels = 0;
  std::uint16_t format = 0;
  TIFFGetField(tiff, TIFFTAG_SAMPLESPERPIXEL, &channels);
  TIFFGetField(tiff, TIFFTAG_SAMPLEFORMAT, &format);
  std::vector<float> back(8);
  for (std::uint32_t row : {0u, 1u}) TIFFReadScanline(tiff, back.data() + 4 * row, row, 0);
  TIFFClose(tiff);
  EXPECT_EQ(channels, 2);
  EXPECT_EQ(format, SAMPLEFORMAT_IEEEFP);
  EXPECT_EQ(back, pairs);
}

TEST_F(ForeignImages, PicturesAreOrdinaryPngs) {
  EXPECT_EQ(picture_extension(), ".png");
  for (const int channels : {1, 3}) {
    Picture picture(3, 2, channels);
    std::iota(picture.bytes.begin(), picture.bytes.end(), std::uint8_t{7});
    written(path_, [&](auto& file) { write_picture(file, picture); });
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    ASSERT_NE(png_image_begin_read_from_file(&image, path_.string().c_str()), 0);
    EXPECT_EQ(image.format, channels == 1 ? PNG_FORMAT_GRAY : PNG_FORMAT_RGB);
    EXPECT_EQ(image.width, 3u);
    std::vector<std::uint8_t> back(picture.bytes.size());
    png_image_finish_read(&image, nullptr, back.data(), 0, nullptr);
    EXPECT_EQ(back, picture.bytes);
  }
}

}  // namespace
