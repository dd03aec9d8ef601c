// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

// Headerless frames of any size and pixel format, against a computation of each sample by itself.
#include "fuzzing/image_file.h"

namespace kv::fuzzing {
namespace {

using namespace polarization;

unsigned byte_of(std::span<const std::uint8_t> bytes, std::size_t i) { return bytes[i]; }

/// As Packing describes them.
unsigned sample_of(std::span<const std::uint8_t> bytes, const PixelFormatTraits& format,
                   std::size_t i) {
  const auto bits = static_cast<std::size_t>(format.bits);
  switch (format.packing) {
    case Packing::bytes:
      return byte_of(bytes, i);
    case Packing::right_words:
      return byte_of(bytes, 2 * i) | byte_of(bytes, 2 * i + 1) << 8;
    case Packing::left_words:
      return (byte_of(bytes, 2 * i) | byte_of(bytes, 2 * i + 1) << 8) >> (16 - format.bit_depth);
    case Packing::bit_stream: {
      unsigned sample = 0;
      for (std::size_t bit = 0; bit < bits; ++bit) {
        const std::size_t place = i * bits + bit;
        sample |= (byte_of(bytes, place / 8) >> place % 8 & 1) << bit;
      }
      return sample;
    }
    case Packing::shared_middle_byte: {
      const std::size_t pair = i / 2 * 3;
      const int low_bits = format.bit_depth - 8;
      const unsigned low = byte_of(bytes, pair + 1) >> (i % 2 * 4) & ((1u << low_bits) - 1);
      return byte_of(bytes, pair + i % 2 * 2) << low_bits | low;
    }
  }
  return 0;
}

void compare(const Frame& frame, std::span<const std::uint8_t> bytes, PixelFormat format) {
  for (std::size_t i = 0; i < frame.samples.size(); ++i) {
    require(frame.samples[i] == sample_of(bytes, traits_of(format), i), "a sample is unpacked");
  }
}

}  // namespace

void set_up() {}

void fuzz(Choices choices) {
  const PixelFormat format = choices.one_of(kPixelFormats).format;
  // Of both signs; some of them greater than any frame.
  const int greatest = choices.once_in(8) ? 1 << 30 : 40;
  const int width = choices.number<int>() % greatest;
  const int height = choices.number<int>() % greatest;
  const auto bytes = choices.rest();
  std::unique_ptr<FrameReader> reader;
  if (!succeeds([&] {
        reader = open_frames(std::as_bytes(bytes), RawShape{width, height, format});
      })) {
    return;
  }
  read_all<Frame>(*reader);
  Frame frame;
  const std::size_t frame_bytes = stored_bytes(format, pixel_count(width, height));
  for (std::size_t i = 0; i < std::min(reader->count(), kMostImages); ++i) {
    if (succeeds([&] { reader->read(i, frame); })) {
      compare(frame, bytes.subspan(i * frame_bytes, frame_bytes), format);
    }
  }
}

}  // namespace kv::fuzzing
