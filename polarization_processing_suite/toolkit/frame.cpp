#include "toolkit/frame.h"

#include <algorithm>
#include <string>

#include "toolkit/error.h"

namespace kv {

Frame make_frame(std::uint64_t width, std::uint64_t height, int bit_depth) {
  // Half a gigabyte of samples: four times the pixels of the largest sensors sold.
  constexpr std::uint64_t largest_frame = std::uint64_t{1} << 28;
  constexpr std::uint64_t largest_side = largest_frame / 2;
  if (width == 0 || height == 0 || width > largest_side || height > largest_side ||
      width * height > largest_frame) {
    throw Error("a frame of " + std::to_string(width) + " x " + std::to_string(height) +
                " pixels is out of range; it may have up to " + std::to_string(largest_frame));
  }
  return {static_cast<int>(width), static_cast<int>(height), bit_depth,
          std::vector<std::uint16_t>(width * height)};
}

std::size_t count_samples_above_full_scale(const Frame& frame) {
  const int limit = full_scale(frame.bit_depth);
  return static_cast<std::size_t>(
      std::count_if(frame.samples.begin(), frame.samples.end(),
                    [limit](std::uint16_t sample) { return sample > limit; }));
}

}  // namespace kv
