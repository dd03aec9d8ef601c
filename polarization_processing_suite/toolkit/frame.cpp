#include "toolkit/frame.h"

#include <algorithm>
#include <string>

#include "toolkit/error.h"

namespace kv {
namespace {

// Half a gigabyte of samples: four times the pixels of the largest sensors sold.
constexpr std::uint64_t kMostPixels = std::uint64_t{1} << 28;

}  // namespace

Frame make_frame(std::uint64_t width, std::uint64_t height, int bit_depth) {
  // The sides come first, as the product of large ones would wrap around.
  if (width == 0 || height == 0 || width > kMostPixels || height > kMostPixels ||
      width * height > kMostPixels) {
    throw Error("a frame of " + std::to_string(width) + " x " + std::to_string(height) +
                " is out of range; it must have from 1 to " + std::to_string(kMostPixels) +
                " pixels");
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
