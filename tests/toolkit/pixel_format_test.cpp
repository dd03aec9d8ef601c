// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "kv/image_files/pixel_format.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "error_of.h"

using namespace kv::polarization;

namespace {

using Unpacked = std::vector<std::uint16_t>;

std::span<const std::byte> bytes_of(const std::string& text) {
  return std::as_bytes(std::span(text));
}

Unpacked unpacked(const std::string& bytes, PixelFormat format, std::size_t count) {
  Unpacked samples(count);
  unpack(bytes_of(bytes), format, samples);
  return samples;
}

TEST(PixelFormats, LieInMemoryAsGenICamAndGigEVisionHaveThem) {
  const auto text = [](auto... bytes) { return std::string{static_cast<char>(bytes)...}; };
  struct Case {
    PixelFormat format;
    std::string bytes;
    Unpacked samples;
  };
  const Case cases[] = {
      {PixelFormat::mono8, text(0xFE, 1), {0xFE, 1}},
      {PixelFormat::mono14, text(0xBC, 0x3A), {0x3ABC}},
      {PixelFormat::mono10_left, text(0xC0, 0xA9), {0x2A7}},
      {PixelFormat::mono12_left, text(0xB0, 0xCD), {0xCDB}},
      {PixelFormat::mono10p, text(0xA7, 0x56, 0xF5, 0x7F, 0), {0x2A7, 0x155, 0x3FF, 0x001}},
      {PixelFormat::mono12p, text(0xBC, 0x3A, 0x12), {0xABC, 0x123}},
      {PixelFormat::mono10_packed, text(0xA9, 0x13, 0x55), {0x2A7, 0x155}},
      {PixelFormat::mono12_packed, text(0xAB, 0x3C, 0x12), {0xABC, 0x123}},
  };
  for (const auto& [format, bytes, samples] : cases) {
    EXPECT_EQ(unpacked(bytes, format, samples.size()), samples) << traits_of(format).name;
  }
}

/// Where a bit of a sample lies, counted from the lowest bit of the first byte.
std::size_t place_of(const PixelFormatTraits& format, std::size_t sample, std::size_t bit) {
  const auto depth = static_cast<std::size_t>(format.bit_depth);
  const auto stored = static_cast<std::size_t>(format.bits);
  switch (format.packing) {
    case Packing::left_words:
      return stored * sample + 16 - depth + bit;
    case Packing::shared_middle_byte: {
      const bool second = sample % 2 != 0;
      const std::size_t low_bits = depth - 8;
      const std::size_t in_pair =
          bit < low_bits ? (second ? 12 : 8) + bit : (second ? 16 : 0) + bit - low_bits;
      return sample / 2 * 24 + in_pair;
    }
    default:
      return stored * sample + bit;
  }
}

// Every number of samples around the groups that are taken at once, at even and odd addresses.
TEST(PixelFormats, AreUnpackedToTheLastSample) {
  for (const PixelFormatTraits& format : kPixelFormats) {
    for (std::size_t count = 0; count < 75; ++count) {
      SCOPED_TRACE(std::string(format.name) + ", samples: " + std::to_string(count));
      Unpacked samples(count);
      std::string bytes(stored_bytes(format.format, count), '\0');
      for (std::size_t i = 0; i < count; ++i) {
        samples[i] = static_cast<std::uint16_t>((i + 1) * 40503 % (1u << format.bit_depth));
        for (std::size_t bit = 0; bit < 16; ++bit) {
          if ((samples[i] >> bit & 1) == 0) continue;
          const std::size_t place = place_of(format, i, bit);
          bytes.at(place / 8) = static_cast<char>(bytes[place / 8] | 1 << place % 8);
        }
      }
      std::vector<std::byte> moved(bytes.size() + 1);
      if (count > 0) std::memcpy(moved.data() + 1, bytes.data(), bytes.size());
      Unpacked back(count + 1, 0xEEEE);
      unpack(std::span(moved).subspan(1), format.format, std::span(back).first(count));
      EXPECT_EQ(back.back(), 0xEEEE);
      back.pop_back();
      EXPECT_EQ(back, samples);
      if (count == 0) continue;
      bytes.pop_back();
      EXPECT_EQ(kind_of([&] { unpacked(bytes, format.format, count); }), FaultKind::argument);
    }
  }
}

TEST(PixelFormats, HaveTheirNamesAndSizes) {
  EXPECT_EQ(pixel_format_named("Mono12Packed"), PixelFormat::mono12_packed);
  EXPECT_EQ(pixel_format_named("Mono12"), PixelFormat::mono12);
  EXPECT_EQ(pixel_format_named("Mono11"), std::nullopt);
  for (const PixelFormatTraits& traits : kPixelFormats) {
    EXPECT_EQ(&traits_of(traits.format), &traits);
  }
  EXPECT_EQ(stored_bytes(PixelFormat::mono10p, 2448 * 2048 + 1), 6266881u + 1);
  EXPECT_EQ(stored_bytes(PixelFormat::mono10p, std::size_t{1} << 62), std::size_t{5} << 60);
}

}  // namespace
