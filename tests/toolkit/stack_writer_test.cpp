// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include <gtest/gtest.h>

#include <string>

#include "error_of.h"
#include "kv/image_files.h"
#include "temporary_folder.h"

using namespace kv::polarization;

namespace {

using Samples = Buffer<std::uint16_t>;

class Stacks : public testing::Test {
 protected:
  /// The file that adding to a stack makes.
  template <class Add>
  std::string stack(ImageFormat format, std::size_t images, Add add) const {
    return written(path_, [&](auto& file) {
      const auto writer = open_stack(file, format, images, {.title = "only once"});
      add(*writer);
      writer->finish();
    });
  }

  TemporaryFolder folder_;
  std::filesystem::path path_ = folder_ / "stack";
};

TEST_F(Stacks, BringEveryFrameBackInItsOrder) {
  const Samples frames[] = {{1, 2, 3, 4, 5, 200}, {7, 8, 9, 10, 11, 255}, {0, 0, 0, 0, 0, 4}};
  for (const ImageFormatTraits& format : image_formats()) {
    if (!format.stacks) continue;
    for (const int bit_depth : {8, 12}) {
      SCOPED_TRACE(std::string(format.name) + std::to_string(bit_depth));
      const std::string content = stack(format.format, 3, [&](StackWriter& writer) {
        for (const Samples& samples : frames) writer.add(GreyImage{3, 2, bit_depth, samples});
      });
      const RawShape raw{3, 2, bit_depth == 8 ? PixelFormat::mono8 : PixelFormat::mono16};
      const auto reader = open_frames(path_, format.has_header ? std::nullopt : std::optional(raw));
      ASSERT_EQ(reader->count(), 3u);
      for (std::size_t i : {2u, 0u, 1u}) EXPECT_EQ(reader->read(i).samples, frames[i]) << i;
      const std::size_t title = content.find("only once");
      EXPECT_EQ(title == std::string::npos, format.name == "npy" || format.name == "raw");
      EXPECT_EQ(content.find("only once", title + 1), std::string::npos);
    }
  }
}

TEST_F(Stacks, OfFloatsAreOneArray) {
  const std::vector<float> values = {1, -2, 3.5f, 4};
  const std::string bytes(reinterpret_cast<const char*>(values.data()), 16);
  for (const auto& [channels, shape] : {std::pair{1, "(2, 2, 2), }"}, {2, "(2, 2, 1, 2), }"}}) {
    const FloatImage image{2 / channels, 2, channels, values};
    const std::string content = stack(ImageFormat::npy, 2, [&image = image](StackWriter& writer) {
      writer.add(image);
      writer.add(image);
    });
    EXPECT_PRED2(contains, content,
                 std::string("'<f4', 'fortran_order': False, 'shape': ") + shape);
    EXPECT_EQ(content.substr(content.size() - 33), "\n" + bytes + bytes);
  }
}

TEST_F(Stacks, WhatIsNoStackIsRefused) {
  const Samples samples = {1, 2, 3, 4};
  const std::vector<float> floats(4);
  const GreyImage image{2, 2, 8, samples};
  const auto refused = [&](ImageFormat format, std::size_t images, auto... added) {
    const auto work = [&] {
      stack(format, images, [&](StackWriter& writer) { (writer.add(added), ...); });
    };
    return std::pair(kind_of(work), error_of(work));
  };
  const auto expect = [](const auto& result, FaultKind kind, const char* part) {
    EXPECT_EQ(result.first, kind) << result.second;
    EXPECT_PRED2(contains, result.second, part);
  };
  for (const ImageFormatTraits& format : image_formats()) {
    if (!format.stacks) {
      expect(refused(format.format, 1, image), FaultKind::unsupported, "pgm, npy, raw");
      continue;
    }
    expect(refused(format.format, 0), FaultKind::argument, "no images");
    expect(refused(format.format, 2, image), FaultKind::argument, "has 1 images; 2 were");
    expect(refused(format.format, 1, image, image), FaultKind::argument, "is full");
    expect(refused(format.format, 2, image, GreyImage{4, 1, 8, samples}), FaultKind::argument,
           "image 2 of the stack has 4 x 1");
    expect(refused(format.format, 2, image, GreyImage{2, 2, 9, samples}), FaultKind::argument,
           "of 16 bits");
    expect(refused(format.format, 1, GreyImage{2, 2, 2, samples}), FaultKind::argument, "above 3");
  }
  expect(refused(ImageFormat::pgm, 1, FloatImage{2, 2, 1, floats}), FaultKind::unsupported,
         "hold no planes of floats");
  EXPECT_TRUE(names_in(path_.parent_path()).empty());
}

}  // namespace
