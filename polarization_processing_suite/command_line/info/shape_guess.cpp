// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "command_line/info/shape_guess.h"

#include <algorithm>
#include <array>

#include "command_line/info/frame_facts.h"

namespace kv::polarization {
namespace {

struct Size {
  int width;
  int height;
};

/// Of sensors with a mosaic of polarizers, whole, as cameras offer them, and binned by two; then
/// some usual ones.
constexpr std::array<Size, 14> kSizes{{{2448, 2048},
                                       {2464, 2056},
                                       {1224, 1024},
                                       {1232, 1028},
                                       {4096, 3000},
                                       {4112, 3008},
                                       {2048, 1500},
                                       {2056, 1504},
                                       {2048, 2048},
                                       {1920, 1080},
                                       {1280, 1024},
                                       {1024, 1024},
                                       {640, 512},
                                       {640, 480}}};

constexpr std::size_t kMostGuesses = 4;

/// The right-aligned or left-aligned words whose bits the samples fill.
PixelFormat word_format(const FrameFacts& facts) {
  constexpr std::array right{PixelFormat::mono10, PixelFormat::mono12, PixelFormat::mono14};
  constexpr std::array left{PixelFormat::mono14_left, PixelFormat::mono12_left,
                            PixelFormat::mono10_left};
  for (const PixelFormat format : right) {
    if (facts.bits_used <= traits_of(format).bit_depth) return format;
  }
  PixelFormat found = PixelFormat::mono16;
  for (const PixelFormat format : left) {
    if (16 - facts.unused_low_bits <= traits_of(format).bit_depth) found = format;
  }
  return found;
}

bool is_of_words(PixelFormat format) {
  const Packing packing = traits_of(format).packing;
  return packing == Packing::right_words || packing == Packing::left_words;
}

ShapeGuess guess_of(const std::filesystem::path& file, RawShape shape) {
  const std::unique_ptr<FrameReader> reader = open_frames(file, shape);
  const Frame frame = reader->read(0);
  if (is_of_words(shape.pixel_format)) shape.pixel_format = word_format(facts_of(frame));
  return {shape, reader->count(), roughness_of(frame)};
}

}  // namespace

std::vector<ShapeGuess> guess_shapes(const std::filesystem::path& file) {
  std::error_code failure;
  const std::uint64_t size = std::filesystem::file_size(file, failure);
  if (failure) return {};
  std::vector<ShapeGuess> guesses;
  for (const auto& [width, height] : kSizes) {
    for (const PixelFormatTraits& traits : kPixelFormats) {
      // Words of all kinds are looked at once, as those of 16 bits.
      if (is_of_words(traits.format) && traits.format != PixelFormat::mono16) continue;
      if (size == 0 || size % stored_bytes(traits.format, pixel_count(width, height)) != 0)
        continue;
      guesses.push_back(guess_of(file, {width, height, traits.format}));
    }
  }
  std::ranges::stable_sort(guesses, {}, &ShapeGuess::roughness);
  if (guesses.size() > kMostGuesses) guesses.resize(kMostGuesses);
  return guesses;
}

std::string options_of(const RawShape& shape) {
  return "--width " + std::to_string(shape.width) + " --height " + std::to_string(shape.height) +
         " --raw-format " + std::string(traits_of(shape.pixel_format).name);
}

}  // namespace kv::polarization
