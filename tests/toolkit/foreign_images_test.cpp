// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

// PNG and TIFF files of kinds that the toolkit never writes, and what libpng and libtiff find in
// those that it writes.
#include <gtest/gtest.h>
#include <png.h>
#include <tiffio.h>
#include <zlib.h>

#include <algorithm>
#include <cstring>
#include <limits>
#include <map>
#include <numeric>
#include <sstream>

#include "error_of.h"
#include "kv/image_files.h"
#include "temporary_folder.h"
#include "toolkit/image_files/formats/tiff_writer.h"

using namespace kv::polarization;

namespace {

using Samples = Buffer<std::uint16_t>;

struct PngKind {
  int width = 2, height = 2, bits = 8, color = PNG_COLOR_TYPE_GRAY, interlace = 0;
  std::string rows = {0, 'a', 'b', 0, 'c', 'd'};  ///< each after the number of its filter
  std::string more = {};                          ///< behind the header, a chunk's kind and content
  int method = 0;
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
  const std::string kinds = {static_cast<char>(kind.bits), static_cast<char>(kind.color), 0,
                             static_cast<char>(kind.method), static_cast<char>(kind.interlace)};
  return "\x89PNG\r\n\x1A\n" + chunk("IHDR" + number(kind.width) + number(kind.height) + kinds) +
         (kind.color == PNG_COLOR_TYPE_PALETTE ? chunk("PLTEabcdef") : "") +
         (kind.more.empty() ? "" : chunk(kind.more)) + chunk("IDAT" + data.substr(0, size)) +
         chunk("IEND");
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
    return open_frames(path_)->read(0);
  }
  void expect_refusal(const std::string& content, const std::string& part,
                      FaultKind kind = FaultKind::file) const {
    EXPECT_PRED2(contains, error_of([&] { read(content); }), part) << content.size();
    EXPECT_EQ(kind_of([&] { read(content); }), kind) << part;
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
      {png_file({.more = "gAMAabcd"}), {'a', 'b', 'c', 'd'}},
      {tiff_file({tiff_page(8)}), letters},
      {tiff_file({tiff_page(8, {{TIFFTAG_PHOTOMETRIC, {PHOTOMETRIC_CFA}}})}), letters},
      {tiff_file({tiff_page(16)}, words),
       {0x0201, 0x0403, 0x0605, 0x0807, 0x0A09, 0x0C0B, 0x0E0D, 0x100F}},
      {tiff_file({tiff_page(16)}, words, true),
       {0x0102, 0x0304, 0x0506, 0x0708, 0x090A, 0x0B0C, 0x0D0E, 0x0F10}},
  };
  for (const auto& [content, samples] : cases) EXPECT_EQ(read(content).samples, samples);
}

TEST_F(ForeignImages, EveryTiffPageIsAFrame) {
  write_content(path_, tiff_file({tiff_page(8), tiff_page(8, {{TIFFTAG_SAMPLESPERPIXEL, {3}}}),
                                  tiff_page(16, {{TIFFTAG_MAXSAMPLEVALUE, {1023}}}),
                                  tiff_page(8, {{TIFFTAG_STRIPOFFSETS, {kSamples + 8}},
                                                {TIFFTAG_MAXSAMPLEVALUE, {4095}}})}));
  const auto reader = open_frames(path_);
  ASSERT_EQ(reader->count(), 4u);
  EXPECT_EQ(reader->read(2).bit_depth, 10);
  EXPECT_EQ(reader->read(3).bit_depth, 8);
  EXPECT_EQ(reader->read(3).samples[7], 'p');
  EXPECT_PRED2(contains, error_of([&] { reader->read(1); }), "3 channels");
  EXPECT_EQ(reader->read(0).samples[7], 'h');
}

TEST_F(ForeignImages, FloatsAndChannelsAreImagesInEitherByteOrder) {
  const std::string floats("\0\0\x80\x3F\0\0\0\xC0", 8);  // 1 and -2
  const TiffPage page = tiff_page(32, {{TIFFTAG_IMAGEWIDTH, {1}},
                                       {TIFFTAG_IMAGELENGTH, {1}},
                                       {TIFFTAG_SAMPLESPERPIXEL, {2}},
                                       {TIFFTAG_SAMPLEFORMAT, {SAMPLEFORMAT_IEEEFP}}});
  std::string swapped = floats;
  std::reverse(swapped.begin(), swapped.begin() + 4);
  std::reverse(swapped.begin() + 4, swapped.end());
  for (const bool big_endian : {false, true}) {
    write_content(path_, tiff_file({page}, big_endian ? swapped : floats, big_endian));
    const Image image = open_images(path_)->read(0);
    EXPECT_EQ(image.channels, 2);
    EXPECT_EQ(image.as<float>()[0], 1);
    EXPECT_EQ(image.as<float>()[1], -2);
  }
  write_content(path_, tiff_file({tiff_page(8, {{TIFFTAG_SAMPLESPERPIXEL, {2}},
                                                {TIFFTAG_PLANARCONFIG, {PLANARCONFIG_SEPARATE}},
                                                {TIFFTAG_STRIPOFFSETS, {kSamples, kSamples + 8}},
                                                {TIFFTAG_STRIPBYTECOUNTS, {8, 8}}})}));
  EXPECT_PRED2(contains, error_of([this] { open_images(path_)->read(0); }), "apart");
}

TEST_F(ForeignImages, OfOtherKindsAreRefusedWithTheirKind) {
  const std::pair<PngKind, const char*> pngs[] = {
      {{.color = PNG_COLOR_TYPE_RGB}, "RGB colour of 8"},
      {{.bits = 16, .color = PNG_COLOR_TYPE_RGBA}, "RGB colour of 16"},
      {{.color = PNG_COLOR_TYPE_PALETTE}, "palette"},
      {{.color = PNG_COLOR_TYPE_GRAY_ALPHA}, "alpha"},
      {{.bits = 4}, "grey of 4 bits"},
  };
  for (const auto& [kind, part] : pngs) {
    expect_refusal(png_file(kind), part, FaultKind::unsupported);
  }
  const std::pair<TiffPage, const char*> tiffs[] = {
      {tiff_page(8, {{TIFFTAG_PHOTOMETRIC, {PHOTOMETRIC_PALETTE}},
                     {TIFFTAG_COLORMAP, std::vector<std::uint32_t>(768)}}),
       "palette"},
      {tiff_page(4), "4 bits"},
      {tiff_page(32, {{TIFFTAG_SAMPLEFORMAT, {SAMPLEFORMAT_IEEEFP}}}), "float"},
      {tiff_page(16, {{TIFFTAG_SAMPLEFORMAT, {SAMPLEFORMAT_INT}}}), "signed"},
      {tiff_page(8, {{TIFFTAG_PHOTOMETRIC, {PHOTOMETRIC_MINISWHITE}}}), "plain grey"},
      {tiff_page(8, {{TIFFTAG_COMPRESSION, {999}}}), "method 999"},
  };
  for (const auto& [page, part] : tiffs) {
    expect_refusal(tiff_file({page}), part, FaultKind::unsupported);
  }
}

// In 32 bits the products of the large sides would pass for the size of a frame.
TEST_F(ForeignImages, WhatTheirBytesCannotHoldIsRefused) {
  expect_refusal(png_file({.width = 16384, .height = 16384}), "16384 x 16384 pixels are announced");
  expect_refusal(png_file({.width = 65536, .height = 65537}), "65536 x 65537 pixels are announced");
  const auto tiff = [](int compression, std::uint32_t width, std::uint32_t height,
                       TiffPage fields = {}) {
    fields.merge(TiffPage{{TIFFTAG_COMPRESSION, {static_cast<std::uint32_t>(compression)}},
                          {TIFFTAG_IMAGEWIDTH, {width}},
                          {TIFFTAG_IMAGELENGTH, {height}}});
    return tiff_file({tiff_page(8, fields)});
  };
  for (const int compression : {COMPRESSION_NONE, COMPRESSION_PACKBITS, COMPRESSION_LZW,
                                COMPRESSION_ADOBE_DEFLATE, COMPRESSION_ZSTD, COMPRESSION_LZMA}) {
    if (TIFFIsCODECConfigured(static_cast<std::uint16_t>(compression)) == 0) continue;
    expect_refusal(tiff(compression, 16384, 16384), "cannot come out of its ");
    expect_refusal(tiff(compression, 65537, 65536), "cannot come out of its ");
  }
  const auto parts = [&](TiffPage fields, const char* part) {
    expect_refusal(tiff(COMPRESSION_NONE, 4, 2, std::move(fields)), part);
  };
  parts({{TIFFTAG_STRIPOFFSETS, {kSamples + 9}}}, "cannot come out of its 7 bytes");
  parts({{TIFFTAG_STRIPOFFSETS, {0xFFFFFFF0}}}, "cannot come out of its 0 bytes");
  parts({{TIFFTAG_ROWSPERSTRIP, {0}}}, "damaged");
  parts({{TIFFTAG_IMAGELENGTH, {0xFFFFFFFF}}, {TIFFTAG_ROWSPERSTRIP, {1}}}, "damaged");
  // Each of many strips could come out of the same few bytes, but not all of them.
  expect_refusal(tiff(COMPRESSION_ADOBE_DEFLATE, 4096, 128,
                      {{TIFFTAG_ROWSPERSTRIP, {2}},
                       {TIFFTAG_STRIPOFFSETS, std::vector<std::uint32_t>(64, kSamples)},
                       {TIFFTAG_STRIPBYTECOUNTS, std::vector<std::uint32_t>(64, 8)}}),
                 "damaged");
}

TEST_F(ForeignImages, LostPagesAreMissed) {
  std::string lost_page = tiff_file({tiff_page(8)});
  lost_page[8 + 2 + 6 * 12 + 2] = '\x7F';  // a second page is announced, beyond the end
  expect_refusal(lost_page, "damaged or truncated");
  lost_page[8 + 2 + 6 * 12 + 2] = 0;
  lost_page[8 + 2 + 6 * 12] = 8;  // or the first page once more, without end
  write_content(path_, lost_page);
  EXPECT_EQ(open_frames(path_)->count(), 1u);
}

TEST_F(ForeignImages, WhatSamplesDoNotShowIsNoted) {
  write_content(path_, tiff_file({tiff_page(8), tiff_page(8, {{TIFFTAG_ORIENTATION, {6}}}),
                                  tiff_page(8, {{TIFFTAG_SUBFILETYPE, {1}}}),
                                  tiff_page(8, {{TIFFTAG_SUBFILETYPE, {2}}})}));
  const auto reader = open_frames(path_);
  ASSERT_EQ(reader->count(), 3u);  // a reduced image is no frame, a page of several is
  for (const std::size_t page : {0u, 1u, 2u}) {
    EXPECT_EQ(reader->read(page).samples[7], 'h');
    ASSERT_EQ(reader->notes().size(), page == 1 ? 1u : 0u);
  }
  reader->read(1);
  EXPECT_PRED2(contains, reader->notes()[0], "orientation 6");
}

/// A page as libtiff writes it, in parts of 32 x 16 pixels or of 7 rows.
template <class Stored>
void write_by_libtiff(const std::string& path, const char* mode, int compression, bool tiled,
                      const Samples& samples, std::uint32_t width, std::uint32_t height) {
  TIFF* tiff = TIFFOpen(path.c_str(), mode);
  ASSERT_NE(tiff, nullptr);
  TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, width);
  TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, height);
  TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, 8 * sizeof(Stored));
  TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISBLACK);
  TIFFSetField(tiff, TIFFTAG_COMPRESSION, compression);
  if (tiled) {
    TIFFSetField(tiff, TIFFTAG_TILEWIDTH, 32);
    TIFFSetField(tiff, TIFFTAG_TILELENGTH, 16);
  } else {
    TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, 7);
  }
  const std::uint32_t columns = tiled ? 32 : width, rows = tiled ? 16 : 1;
  std::vector<Stored> part(columns * rows);
  for (std::uint32_t top = 0; top < height; top += rows) {
    for (std::uint32_t left = 0; left < width; left += columns) {
      for (std::uint32_t i = 0; i < part.size(); ++i) {
        const std::uint32_t from = (top + i / columns) * width + left + i % columns;
        part[i] = static_cast<Stored>(from < samples.size() ? samples[from] : 0);
      }
      tiled ? TIFFWriteTile(tiff, part.data(), left, top, 0, 0)
            : TIFFWriteScanline(tiff, part.data(), top);
    }
  }
  TIFFClose(tiff);
}

TEST_F(ForeignImages, TiffsAreReadHoweverTheyArePutTogether) {
  static int complaints = 0;  // of the process
  TIFFSetErrorHandler([](const char*, const char*, va_list) { ++complaints; });
  for (const int bits : {8, 16}) {
    Samples samples(75 * 61);
    for (std::uint32_t i = 0; i < samples.size(); ++i) {
      samples[i] = static_cast<std::uint16_t>(i / 20 * (bits == 8 ? 1 : 259));
    }
    for (const char* mode : {"w", "wb", "w8", "w8b"}) {
      for (const int compression : {COMPRESSION_NONE, COMPRESSION_PACKBITS, COMPRESSION_LZW,
                                    COMPRESSION_ADOBE_DEFLATE, COMPRESSION_ZSTD}) {
        if (TIFFIsCODECConfigured(static_cast<std::uint16_t>(compression)) == 0) continue;
        for (const bool tiled : {false, true}) {
          const auto write =
              bits == 8 ? write_by_libtiff<std::uint8_t> : write_by_libtiff<std::uint16_t>;
          write(path_.string(), mode, compression, tiled, samples, 75, 61);
          EXPECT_TRUE(open_frames(path_)->read(0).samples == samples)
              << bits << mode << compression << tiled;
          const std::string content = content_of(path_);
          EXPECT_NE(error_of([&] { read(content.substr(0, content.size() / 2)); }), "");
        }
      }
    }
  }
  TIFFSetErrorHandler(nullptr);
  EXPECT_EQ(complaints, 0);
}

/// Counts what is fetched from a file.
class CountingBuffer : public std::stringbuf {
 public:
  using std::stringbuf::stringbuf;
  int fetches = 0;

 private:
  std::streamsize xsgetn(char* data, std::streamsize size) override {
    ++fetches;
    return std::stringbuf::xsgetn(data, size);
  }
};

TEST_F(ForeignImages, LongStacksAreReadPageByPage) {
  constexpr std::uint32_t pages = 400;
  constexpr std::uint32_t directories = pages * (2 + 6 * 12 + 4);
  std::vector<TiffPage> all;
  for (std::uint32_t page = 0; page < pages; ++page) {
    all.push_back(tiff_page(8, {{TIFFTAG_STRIPOFFSETS, {8 + directories + 40000 * page}}}));
  }
  std::string content = tiff_file(all, "");
  for (std::size_t page = 0; page < pages; ++page) {
    content += std::string(8, static_cast<char>(page)) + std::string(39992, ' ');
  }
  CountingBuffer buffer(content);
  std::istream stream(&buffer);
  const auto reader = open_frames(stream);
  ASSERT_EQ(reader->count(), pages);
  Frame frame;
  for (std::size_t page = 0; reader->read_next(frame); ++page) {
    EXPECT_EQ(frame.samples[7], page % 256);
  }
  EXPECT_LT(buffer.fetches, 4 * static_cast<int>(pages));
}

TEST_F(ForeignImages, LargeTiffsHaveLargeStripsAndOffsets) {
  const Samples samples = make_frame(1500, 1000, 16).samples;
  PendingFile file(path_);
  write_image(file, ImageFormat::tiff, GreyImage{1500, 1000, 16, samples});
  file.close();
  file.publish();
  TIFF* tiff = TIFFOpen(path_.string().c_str(), "r");
  ASSERT_NE(tiff, nullptr);
  EXPECT_EQ(TIFFNumberOfStrips(tiff), 4u);  // 320 rows of 3000 bytes are just below a megabyte
  TIFFClose(tiff);
  CountingBuffer buffer(content_of(path_));
  std::istream stream(&buffer);
  EXPECT_TRUE(open_frames(stream)->read(0).samples == samples);
  EXPECT_LE(buffer.fetches, 4);  // header, directory, arrays of strips, and all pixels at once
  EXPECT_FALSE(needs_big_tiff(std::uint64_t{1} << 31));
  EXPECT_TRUE(needs_big_tiff((std::uint64_t{1} << 32) - 1));
  EXPECT_FALSE(needs_big_tiff(1'000'000, 4000));
  EXPECT_TRUE(needs_big_tiff(1'000'000, 4300));
  EXPECT_TRUE(needs_big_tiff(1, 10'000'000));  // whose fields alone take as much
}

TEST_F(ForeignImages, StacksAreOrdinaryPagesThatBeginAtWholeLines) {
  const std::vector<float> values = {0.5f, -1, 2, 4};
  written(path_, [&](auto& file) {
    const auto writer = open_stack(file, ImageFormat::tiff, 3);
    for (int i = 0; i < 3; ++i) writer->add(FloatImage{1, 2, 2, values});
    writer->finish();
  });
  TIFF* tiff = TIFFOpen(path_.string().c_str(), "r");
  ASSERT_NE(tiff, nullptr);
  for (int page = 0; page < 3; ++page) {
    std::vector<float> back(4);
    EXPECT_EQ(TIFFReadEncodedStrip(tiff, 0, back.data(), 16), 16);
    EXPECT_EQ(back, values);
    EXPECT_EQ(TIFFGetStrileOffset(tiff, 0) % 64, 0u);
    EXPECT_EQ(TIFFReadDirectory(tiff), page < 2 ? 1 : 0);
  }
  TIFFClose(tiff);
}

/// The pixels of a page as libtiff reads them.
std::vector<std::uint8_t> read_by_libtiff(const std::string& path, int compression) {
  TIFF* tiff = TIFFOpen(path.c_str(), "r");
  std::uint16_t stored = 0;
  TIFFGetField(tiff, TIFFTAG_COMPRESSION, &stored);
  EXPECT_EQ(stored, compression);
  std::vector<std::uint8_t> bytes;
  std::vector<std::uint8_t> strip(static_cast<std::size_t>(TIFFStripSize(tiff)));
  for (std::uint32_t i = 0; i < TIFFNumberOfStrips(tiff); ++i) {
    const tmsize_t size = TIFFReadEncodedStrip(tiff, i, strip.data(), -1);
    bytes.insert(bytes.end(), strip.begin(), strip.begin() + std::max<tmsize_t>(size, 0));
  }
  TIFFClose(tiff);
  return bytes;
}

TEST_F(ForeignImages, OursAreOrdinaryTiffsHoweverTheyAreCompressed) {
  const std::pair<std::optional<Compression>, int> cases[] = {
      {std::nullopt, COMPRESSION_NONE},
      {Compression::none, COMPRESSION_NONE},
      {Compression::fast, COMPRESSION_ADOBE_DEFLATE},
      {Compression::small, COMPRESSION_ADOBE_DEFLATE}};
  const std::string path = (folder_ / "frame.tiff").string();
  for (const auto& [compression, stored] : cases) {
    const auto expect_same = [&, &asked = compression, &method = stored](const auto& image,
                                                                         auto bytes) {
      save_image(path, image, {.compression = asked});
      const std::span<const std::byte> wanted = std::as_bytes(std::span(bytes));
      const std::vector<std::uint8_t> back = read_by_libtiff(path, method);
      ASSERT_EQ(back.size(), wanted.size());
      EXPECT_EQ(std::memcmp(back.data(), wanted.data(), back.size()), 0);
    };
    for (const int width : {1, 35, 700}) {
      const int height = 900;  // several strips of the widest ones
      const auto size = static_cast<std::size_t>(width) * height;
      Samples samples(size);
      std::vector<float> floats(3 * size);
      for (std::size_t i = 0; i < floats.size(); ++i) {
        samples[i % size] = static_cast<std::uint16_t>(i * i >> 2);
        floats[i] = 1.0F / static_cast<float>(i) - 0.1F;
      }
      floats[0] = std::numeric_limits<float>::quiet_NaN();
      Picture picture(width, height, 3);
      for (std::size_t i = 0; i < picture.bytes.size(); ++i) {
        picture.bytes[i] = static_cast<std::uint8_t>(i * i >> 3);
      }
      expect_same(GreyImage{width, height, 16, samples}, std::span(samples));
      expect_same(FloatImage{width, height, 3, floats}, std::span(floats));
      expect_same(FloatImage{width, height, 1, std::span(floats).first(size)},
                  std::span(floats).first(size));
      expect_same(picture, std::span(picture.bytes));
    }
  }
}

TEST_F(ForeignImages, NormalizedStokesIsAnOrdinaryFloatTiff) {
  const std::vector<float> pairs = {0.5f, -0.25f, -1, 1, 0, 0.125f, 0.75f, -0.5f};
  EXPECT_EQ(preferred_format(ImageKind::floats), ImageFormat::tiff);
  written(path_, [&](auto& file) {
    write_image(file, ImageFormat::tiff, FloatImage{2, 2, 2, pairs});
  });
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

TEST_F(ForeignImages, DamagedPngsAreRefusedWithTheReason) {
  const std::pair<PngKind, const char*> pngs[] = {
      {{.bits = 3}, "colour type 0 with 3 bits"},
      {{.color = 5}, "colour type 5 with 8 bits"},
      {{.interlace = 2}, "unknown methods"},
      {{.method = 1}, "unknown methods"},
      {{.rows = {0, 'a', 'b', 5, 'c', 'd'}}, "filter 5"},
      {{.rows = {0, 'a', 'b', 0, 'c'}}, "the 6 bytes of its rows"},
      {{.rows = {0, 'a', 'b', 0, 'c', 'd', 'e'}}, "the 6 bytes of its rows"},
      {{.more = "IHDRabcdefghijklm"}, "chunk IHDR is of no known kind"},
      {{.more = "IDAX"}, "chunk IDAX is of no known kind"},
      {{.more = "I-AT"}, "at byte 33 a chunk has to begin"},
      {{.more = "IDATx"}, "the 6 bytes"},
      {{.more = "IDAT" + std::string(70000, 'x')}, "too long"},
      {{.width = 0}, "is empty"},
  };
  for (const auto& [kind, part] : pngs) expect_refusal(png_file(kind), part);
  const std::string whole = png_file({});
  std::string wrong = whole;
  wrong[whole.find("IDAT") + 6] ^= 1;
  expect_refusal(wrong, "checksum of its chunk IDAT");
  expect_refusal(whole.substr(0, whole.size() - 1), "ends too early");
  expect_refusal(whole.substr(0, whole.size() - 12), "ends too early");  // the whole of IEND
}

/// A grey image as libpng writes it.
void write_by_libpng(const std::string& path, const Samples& samples, std::uint32_t width, int bits,
                     int filters, int interlace) {
  std::FILE* file = std::fopen(path.c_str(), "wb");
  png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
  png_infop info = png_create_info_struct(png);
  const auto height = static_cast<std::uint32_t>(samples.size()) / width;
  std::vector<std::uint8_t> bytes;
  for (const std::uint16_t sample : samples) {
    if (bits == 16) bytes.push_back(static_cast<std::uint8_t>(sample >> 8));
    bytes.push_back(static_cast<std::uint8_t>(sample));
  }
  png_init_io(png, file);
  png_set_IHDR(png, info, width, height, bits, PNG_COLOR_TYPE_GRAY, interlace, 0, 0);
  png_set_filter(png, 0, filters);
  png_write_info(png, info);
  std::vector<png_bytep> rows;
  for (std::size_t row = 0; row < height; ++row) {
    rows.push_back(bytes.data() + row * bytes.size() / height);
  }
  png_write_image(png, rows.data());
  png_write_end(png, info);
  png_destroy_write_struct(&png, &info);
  std::fclose(file);
}

TEST_F(ForeignImages, PngsAreReadHoweverTheyAreFiltered) {
  for (const auto& [width, height] : {std::pair{1u, 1u}, {5u, 3u}, {3u, 40u}, {67u, 21u}}) {
    for (const int bits : {8, 16}) {
      Samples samples(width * height);
      for (std::uint32_t i = 0; i < samples.size(); ++i) {
        samples[i] = static_cast<std::uint16_t>((i * i * 40503 + i * 77) % (1u << bits));
      }
      for (const int filters : {PNG_FILTER_NONE, PNG_FILTER_SUB, PNG_FILTER_UP, PNG_FILTER_AVG,
                                PNG_FILTER_PAETH, PNG_ALL_FILTERS}) {
        for (const int interlace : {PNG_INTERLACE_NONE, PNG_INTERLACE_ADAM7}) {
          write_by_libpng(path_.string(), samples, width, bits, filters, interlace);
          EXPECT_TRUE(open_frames(path_)->read(0).samples == samples)
              << width << " columns of " << bits << " bits, filters " << filters << interlace;
        }
      }
    }
  }
}

struct PngContent {
  int bits = 0, channels = 0;
  std::vector<std::uint8_t> bytes;  ///< in the machine's order
  std::map<std::string, std::string> texts;
};

/// Reads the whole file, and counts what libpng warns of as a failure.
PngContent read_by_libpng(const std::string& path) {
  const auto fail = [](png_structp, png_const_charp message) { ADD_FAILURE() << message; };
  PngContent content;
  std::FILE* file = std::fopen(path.c_str(), "rb");
  png_structp png = png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, fail);
  png_infop info = png_create_info_struct(png);
  png_init_io(png, file);
  png_read_png(png, info, PNG_TRANSFORM_SWAP_ENDIAN, nullptr);
  content.bits = png_get_bit_depth(png, info);
  content.channels = png_get_channels(png, info);
  for (std::uint32_t row = 0; row < png_get_image_height(png, info); ++row) {
    const png_bytep bytes = png_get_rows(png, info)[row];
    content.bytes.insert(content.bytes.end(), bytes, bytes + png_get_rowbytes(png, info));
  }
  png_textp texts = nullptr;
  const int count = png_get_text(png, info, &texts, nullptr);
  for (int i = 0; i < count; ++i) content.texts[texts[i].key] = texts[i].text;
  png_destroy_read_struct(&png, &info, nullptr);
  std::fclose(file);
  return content;
}

TEST_F(ForeignImages, OursAreOrdinaryPngs) {
  EXPECT_EQ(preferred_format(ImageKind::picture), ImageFormat::png);
  for (const Compression compression : {Compression::none, Compression::fast, Compression::small}) {
    const WriteOptions options{"A title", "made \xC3\xA4", compression};
    for (const int width : {1, 6, 301, 70000}) {
      for (const int channels : {1, 3}) {
        Picture picture(width, 3, channels);
        for (std::size_t i = 0; i < picture.bytes.size(); ++i) {
          picture.bytes[i] = static_cast<std::uint8_t>(i * i >> 3);
        }
        save_image(folder_ / "frame.png", picture, options);
        const PngContent back = read_by_libpng((folder_ / "frame.png").string());
        EXPECT_EQ(back.bits, 8);
        EXPECT_EQ(back.channels, channels);
        EXPECT_TRUE(std::ranges::equal(back.bytes, picture.bytes)) << width;
        EXPECT_EQ(back.texts,
                  (decltype(back.texts){{"Title", "A title"}, {"Provenance", "made \xC3\xA4"}}));
      }
      Samples samples(static_cast<std::size_t>(width) * 5);
      for (std::size_t i = 0; i < samples.size(); ++i) {
        samples[i] = static_cast<std::uint16_t>(i * 40503);
      }
      save_image(folder_ / "frame.png", GreyImage{width, 5, 16, samples}, options);
      const PngContent back = read_by_libpng((folder_ / "frame.png").string());
      EXPECT_EQ(back.bits, 16);
      ASSERT_EQ(back.bytes.size(), 2 * samples.size());
      EXPECT_EQ(std::memcmp(back.bytes.data(), samples.data(), back.bytes.size()), 0) << width;
    }
  }
}

}  // namespace
