// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "kv/polarization/buffer.h"

namespace kv::polarization {

/// Number of pixels of a frame. Neither side may be negative.
constexpr std::size_t pixel_count(int width, int height) {
  return static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
}

/// Greatest sample of that many bits, 1 to 16.
constexpr int full_scale(int bit_depth) { return (1 << bit_depth) - 1; }

/// What a sample is stored in, in the order of the machine.
enum class SampleType : std::uint8_t { uint8, uint16 };

/// Of one sample.
constexpr std::size_t bytes_of(SampleType type) { return type == SampleType::uint8 ? 1 : 2; }

/// Where the significant bits of a sample lie in its 8 or 16: the lowest ones (right), or the
/// highest ones with zeros below (left).
enum class SampleAlignment : std::uint8_t { right, left };

/// A raw mosaic frame in somebody else's memory, which has to outlive the calls that get the view.
///
/// The library takes packed rows of right-aligned 16-bit samples as they lie. Any other frame is
/// first copied, once a call, into a buffer that its taker keeps: about 1 ms for 5 megapixels.
struct FrameView {
  std::span<const std::byte> bytes;      ///< from the first sample to the last one, or further
  int width = 0;                         ///< pixels
  int height = 0;                        ///< pixels
  std::ptrdiff_t row_pitch = 0;          ///< bytes from row to row; 0 for rows without gaps
  SampleType type = SampleType::uint16;  ///< what a sample is stored in
  int bit_depth = 16;                    ///< significant bits of a sample
  SampleAlignment alignment = SampleAlignment::right;  ///< where these lie
};

/// Views of packed, right-aligned samples.
inline FrameView frame_view(std::span<const std::uint16_t> samples, int width, int height,
                            int bit_depth = 16) {
  return {
      .bytes = std::as_bytes(samples), .width = width, .height = height, .bit_depth = bit_depth};
}
inline FrameView frame_view(std::span<const std::uint8_t> samples, int width, int height,
                            int bit_depth = 8) {
  return {.bytes = std::as_bytes(samples),
          .width = width,
          .height = height,
          .type = SampleType::uint8,
          .bit_depth = bit_depth};
}

/// Throws Fault of kind argument, with the reason, when there can be no such frame: a side below 1
/// or above 2^20, a bit depth that the samples cannot have, a pitch below a row, or bytes that end
/// before the last sample.
void check(const FrameView& frame);

/// An owned frame, as the library takes it: row by row without gaps, right-aligned.
struct Frame {
  int width = 0;                  ///< pixels
  int height = 0;                 ///< pixels
  int bit_depth = 16;             ///< significant bits of a sample, 1 to 16
  Buffer<std::uint16_t> samples;  ///< width * height of them

  /// Lasts until the frame ends or is reshaped.
  FrameView view() const { return frame_view(samples, width, height, bit_depth); }
  operator FrameView() const { return view(); }

  /// Makes it a frame of that size, whose samples have no value yet; memory is used again. Throws
  /// Fault of kind argument when a side is 0, or above what any sensor has: the header of a damaged
  /// file may claim any size.
  void reshape(std::uint64_t new_width, std::uint64_t new_height, int new_bit_depth);
};

/// A black frame of that size. Throws as Frame::reshape does.
Frame make_frame(std::uint64_t width, std::uint64_t height, int bit_depth);

/// How many samples need more bits than the frame claims.
std::size_t count_samples_above_full_scale(const Frame& frame);

}  // namespace kv::polarization
