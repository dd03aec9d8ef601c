#include "foreign_images.h"

#include <gtest/gtest.h>
#include <png.h>
#include <tiffio.h>

#include <numeric>

#include "temporary_folder.h"
#include "toolkit/error.h"
#include "toolkit/image_files/frame_reader.h"
#include "toolkit/image_files/image_writer.h"

namespace {

std::vector<std::uint16_t> counting_from(int first) {
  std::vector<std::uint16_t> samples(48);
  std::iota(samples.begin(), samples.end(), static_cast<std::uint16_t>(first));
  return samples;
}

TEST(ForeignImages, TiffIsReadHoweverItIsStored) {
  const TemporaryFolder folder;
  const auto path = folder / "frame.tif";
  const TiffKind kinds[] = {
      {},
      {.big_endian = true},
      {.compression = COMPRESSION_LZW},
      {.compression = COMPRESSION_ADOBE_DEFLATE},
      {.tiled = true},
      {.photometric = 32803},  // colour filter array
  };
  for (const TiffKind& kind : kinds) {
    write_tiff_pages(path, {kind});
    EXPECT_EQ(kv::open_frames(path, std::nullopt)->read(0).samples, counting_from(0))
        << "compression " << kind.compression << ", tiled " << kind.tiled << ", big endian "
        << kind.big_endian;
  }
}

TEST(ForeignImages, EveryTiffPageIsAFrame) {
  const TemporaryFolder folder;
  const auto path = folder / "stack.tif";
  write_tiff_pages(path, {{}, {.channels = 3, .photometric = PHOTOMETRIC_RGB}, {}});
  const auto reader = kv::open_frames(path, std::nullopt);
  ASSERT_EQ(reader->count(), 3u);
  EXPECT_EQ(reader->read(2).samples, counting_from(512));
  EXPECT_THROW(reader->read(1), kv::Error);
  EXPECT_EQ(reader->read(0).samples, counting_from(0));
}

TEST(ForeignImages, InterlacedPngIsRead) {
  const TemporaryFolder folder;
  const auto path = folder / "frame.png";
  write_png_of_kind(path, PNG_COLOR_TYPE_GRAY, 8, true);
  EXPECT_EQ(kv::open_frames(path, std::nullopt)->read(0).samples, counting_from(0));
}

TEST(ForeignImages, NormalizedStokesIsAnOrdinaryFloatTiff) {
  const TemporaryFolder folder;
  const auto path = folder / "pairs.tiff";
  const std::vector<float> pairs = {0.5f, -0.25f, -1, 1, 0, 0.125f, 0.75f, -0.5f};
  kv::PendingFile file(path);
  kv::write_float_pairs(file, 2, 2, pairs);
  file.close();
  file.publish();

  TIFF* tiff = TIFFOpen(path.string().c_str(), "r");
  ASSERT_NE(tiff, nullptr);
  std::uint16_t channels = 0;
  std::uint16_t format = 0;
  TIFFGetField(tiff, TIFFTAG_SAMPLESPERPIXEL, &channels);
  TIFFGetField(tiff, TIFFTAG_SAMPLEFORMAT, &format);
  EXPECT_EQ(channels, 2);
  EXPECT_EQ(format, SAMPLEFORMAT_IEEEFP);
  std::vector<float> back(8);
  TIFFReadScanline(tiff, back.data(), 0, 0);
  TIFFReadScanline(tiff, back.data() + 4, 1, 0);
  TIFFClose(tiff);
  EXPECT_EQ(back, pairs);
}

}  // namespace
