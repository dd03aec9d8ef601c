// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include <gtest/gtest.h>

#include <numeric>
#include <string>

#include "error_of.h"
#include "kv/image_files.h"
#include "temporary_folder.h"

using namespace kv::polarization;

namespace {

using Samples = Buffer<std::uint16_t>;

/// Bytes as they lie in memory.
template <class Elements>
std::string bytes_of_all(const Elements& elements) {
  return {reinterpret_cast<const char*>(elements.data()), elements.size() * sizeof(elements[0])};
}

class Images : public testing::Test {
 protected:
  static bool reads(const ImageFormatTraits& traits) {
    return traits.available() && traits.has_header;
  }

  /// Writes an image of 3 x 2 pixels, and expects it back.
  template <class Written>
  void expect_back(ImageFormat format, const Written& image, int channels, ElementType element,
                   const std::string& bytes) {
    written(path_, [&](auto& file) { write_image(file, format, image, {.title = "title"}); });
    const auto reader = open_images(path_);
    EXPECT_EQ(reader->count(), 1u);
    reader->read(0, back_);
    EXPECT_EQ(std::pair(back_.width, back_.height), std::pair(3, 2));
    EXPECT_EQ(back_.channels, channels);
    EXPECT_EQ(back_.element, element);
    EXPECT_TRUE(bytes_of_all(back_.bytes) == bytes);
    EXPECT_EQ(kind_of([&] { reader->read(1); }), FaultKind::argument);
  }

  Image back_;
  TemporaryFolder folder_;
  std::filesystem::path path_ = folder_ / "image";
};

TEST_F(Images, ComeBackAsTheyWereWritten) {
  const Samples bytes = {1, 2, 3, 4, 5, 255};
  const Samples words = {1, 256, 3, 4095, 5, 65535};
  std::vector<float> floats(18);
  std::iota(floats.begin(), floats.end(), -1.5f);
  for (const ImageFormatTraits& traits : image_formats()) {
    if (!reads(traits)) continue;
    SCOPED_TRACE(traits.name);
    const ImageFormat format = traits.format;
    expect_back(format, GreyImage{3, 2, 8, bytes}, 1, ElementType::uint8, "\1\2\3\4\5\xFF");
    expect_back(format, GreyImage{3, 2, 16, words}, 1, ElementType::uint16, bytes_of_all(words));
    for (const std::size_t channels : {1u, 2u, 3u}) {
      const auto count = static_cast<int>(channels);
      const std::span values(floats.data(), 6 * channels);
      if (traits.writes(ImageKind::floats)) {
        expect_back(format, FloatImage{3, 2, count, values}, count, ElementType::float32,
                    bytes_of_all(values));
        EXPECT_EQ(back_.as<float>()[1], -0.5f);
      }
      if (channels == 2) continue;
      Picture picture(3, 2, count);
      std::iota(picture.bytes.begin(), picture.bytes.end(), std::uint8_t{250});
      expect_back(format, picture, count, ElementType::uint8, bytes_of_all(picture.bytes));
    }
  }
}

TEST_F(Images, OfStacksComeOneByOne) {
  std::vector<float> floats(24);
  std::iota(floats.begin(), floats.end(), 0.0f);
  for (const ImageFormat format : {ImageFormat::tiff, ImageFormat::npy}) {
    if (!traits_of(format).available()) continue;
    for (const int channels : {1, 2}) {  // 6 columns are none of channels
      written(path_, [&](auto& file) {
        const auto stack = open_stack(file, format, 2);
        for (const std::size_t first : {0u, 12u}) {
          stack->add(FloatImage{6, 2 / channels, channels, {floats.data() + first, 12}});
        }
        stack->finish();
      });
      const auto reader = open_images(path_);
      ASSERT_EQ(reader->count(), 2u);
      const Image second = reader->read(1);
      EXPECT_EQ(second.width, 6);
      EXPECT_EQ(second.channels, channels);
      EXPECT_EQ(second.as<float>()[0], 12);
    }
  }
  write_content(path_, "P5 2 1 255\nabP6 1 1 255\ncde");
  EXPECT_EQ(open_images(path_)->read(1).channels, 3);
  EXPECT_EQ(kind_of([this] { open_frames(path_); }), FaultKind::file);  // for frames it is damaged
}

TEST_F(Images, DamagedAnywhereAreRefusedOrReadButNothingElse) {
  for (const ImageFormatTraits& traits : image_formats()) {
    if (!reads(traits)) continue;
    const std::string whole =
        written(path_, [&](auto& file) { write_image(file, traits.format, Picture(2, 2, 3)); });
    for (std::size_t i = 0; i < whole.size(); ++i) {
      for (const char value : {'\1', '\xFF'}) {
        std::string changed = whole;
        changed[i] = value;
        write_content(path_, changed);
        // Anything but a Fault fails the test.
        const auto kind = kind_of([&] { open_images(path_)->read(0, back_); });
        EXPECT_TRUE(!kind || *kind == FaultKind::file || *kind == FaultKind::unsupported)
            << traits.name << ", byte " << i << " as " << int{value};
      }
    }
  }
}

TEST_F(Images, WithoutAHeaderAreRefused) {
  write_content(path_, std::string(64, 'x'));
  EXPECT_PRED2(contains, error_of([this] { open_images(path_); }), "headerless");
  EXPECT_EQ(kind_of([this] { open_images(path_); }), FaultKind::unsupported);
  EXPECT_EQ(kind_of([this] { open_images(folder_ / "missing"); }), FaultKind::file);
}

}  // namespace
