// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "kv/polarization/frame.h"

#include <algorithm>
#include <string>

#include "kv/polarization/fault.h"

namespace kv::polarization {
namespace {

/// Some twenty times the largest sensors. Beyond it a size is an error, not a frame.
constexpr std::uint64_t kMaximumPixels = 1u << 28;

/// A line sensor's strip may be long.
constexpr std::uint64_t kMaximumSide = 1u << 20;

std::string size_text(std::uint64_t width, std::uint64_t height) {
  return "a frame of " + std::to_string(width) + " x " + std::to_string(height) + " pixels";
}

void check_size(std::uint64_t width, std::uint64_t height) {
  if (width == 0 || height == 0) {
    throw Fault(FaultKind::argument,
                size_text(width, height) + " is empty; both sides must be 1 or more");
  }
  if (width > kMaximumSide || height > kMaximumSide || width * height > kMaximumPixels) {
    throw Fault(FaultKind::argument, size_text(width, height) +
                                         " is larger than any sensor; a side may have up to " +
                                         std::to_string(kMaximumSide) + " pixels, and a frame " +
                                         std::to_string(kMaximumPixels));
  }
}

}  // namespace

void check(const FrameView& frame) {
  const int bits = static_cast<int>(8 * bytes_of(frame.type));
  if (frame.width < 0 || frame.height < 0) {
    throw Fault(FaultKind::argument, "a frame of " + std::to_string(frame.width) + " x " +
                                         std::to_string(frame.height) +
                                         " pixels cannot be; both sides must be 1 or more");
  }
  const auto width = static_cast<std::uint64_t>(frame.width);
  const auto height = static_cast<std::uint64_t>(frame.height);
  check_size(width, height);
  if (frame.bit_depth < 1 || frame.bit_depth > bits) {
    throw Fault(FaultKind::argument, "a bit depth of " + std::to_string(frame.bit_depth) +
                                         " does not fit samples of " + std::to_string(bits) +
                                         " bits; it must be from 1 to " + std::to_string(bits));
  }
  const std::uint64_t row = width * bytes_of(frame.type);
  if (frame.row_pitch < 0 ||
      (frame.row_pitch != 0 && static_cast<std::uint64_t>(frame.row_pitch) < row)) {
    throw Fault(FaultKind::argument, "a pitch of " + std::to_string(frame.row_pitch) +
                                         " bytes is less than a row, which has " +
                                         std::to_string(row) + "; it must be that or more, or 0");
  }
  const std::uint64_t pitch =
      frame.row_pitch == 0 ? row : static_cast<std::uint64_t>(frame.row_pitch);
  const std::uint64_t needed = pitch * (height - 1) + row;
  if (frame.bytes.size() < needed) {
    throw Fault(FaultKind::argument, size_text(width, height) + " needs " + std::to_string(needed) +
                                         " bytes, but its memory has " +
                                         std::to_string(frame.bytes.size()));
  }
}

void Frame::reshape(std::uint64_t new_width, std::uint64_t new_height, int new_bit_depth) {
  check_size(new_width, new_height);
  samples.resize(static_cast<std::size_t>(new_width * new_height));
  width = static_cast<int>(new_width);
  height = static_cast<int>(new_height);
  bit_depth = new_bit_depth;
}

Frame make_frame(std::uint64_t width, std::uint64_t height, int bit_depth) {
  Frame frame;
  frame.reshape(width, height, bit_depth);
  std::fill(frame.samples.begin(), frame.samples.end(), std::uint16_t{0});
  return frame;
}

std::size_t count_samples_above_full_scale(const Frame& frame) {
  const int limit = full_scale(frame.bit_depth);
  return static_cast<std::size_t>(std::count_if(frame.samples.begin(), frame.samples.end(),
                                                [limit](int sample) { return sample > limit; }));
}

}  // namespace kv::polarization
