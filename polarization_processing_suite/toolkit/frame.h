#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace kv {

/// One raw mosaic frame, row by row without gaps.
struct Frame {
  int width = 0;
  int height = 0;
  int bit_depth = 16;  ///< significant bits of a sample, the lowest ones, 1 to 16
  std::vector<std::uint16_t> samples;
};

/// Number of pixels of a frame. Neither side may be negative.
constexpr std::size_t pixel_count(int width, int height) {
  return static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
}

/// Greatest sample of that many bits.
constexpr int full_scale(int bit_depth) { return (1 << bit_depth) - 1; }

/// A black frame of that size.
/// Throws Error when a side is 0, or when there are more pixels than any sensor has: the header of
/// a damaged file may claim any size.
Frame make_frame(std::uint64_t width, std::uint64_t height, int bit_depth);

/// How many samples need more bits than the frame claims.
std::size_t count_samples_above_full_scale(const Frame& frame);

}  // namespace kv
