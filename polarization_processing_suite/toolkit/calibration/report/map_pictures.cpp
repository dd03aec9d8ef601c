// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "toolkit/calibration/report/map_pictures.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "kv/pictures/colours.h"
#include "kv/polarization/frame.h"

namespace kv::polarization {
namespace {

// The smaller ones stand four in a row, the larger one alone.
constexpr int kLongestClassSide = 240;
constexpr int kLongestFrameSide = 320;

constexpr int kLevels = 255;  ///< of the diverging scale, an odd number, so that 0 has its own
constexpr std::uint8_t kNoValue = 255;
constexpr Colour kNoValueColour{128, 128, 128};

int divided_up(int value, int divisor) { return (value + divisor - 1) / divisor; }

int block_for(int width, int height, int longest_side) {
  return divided_up(std::max(width, height), longest_side);
}

std::size_t index_of(int column, int row, int width) {
  return pixel_count(width, row) + static_cast<std::size_t>(column);
}

struct BlockSum {
  double sum = 0;
  int count = 0;
};

double shown_value(const BlockSum& block) {
  return block.count > 0 ? block.sum / block.count : std::numeric_limits<double>::quiet_NaN();
}

}  // namespace

std::array<ReducedMap, 4> reduced_maps(const Calibration& calibration,
                                       const PixelProperty& property,
                                       const std::array<PropertySample, 4>& samples) {
  ReducedMap shape;
  shape.block = block_for(calibration.width / 2, calibration.height / 2, kLongestClassSide);
  shape.width = divided_up(calibration.width / 2, shape.block);
  shape.height = divided_up(calibration.height / 2, shape.block);
  const std::size_t blocks = pixel_count(shape.width, shape.height);
  std::array<std::vector<BlockSum>, 4> sums;
  for (auto& sum : sums) sum.resize(blocks);

  const Buffer<float>& values = calibration.maps.*property.values;
  for_each_pixel(calibration, [&](std::size_t pixel_class, int column, int row, std::size_t index) {
    if (calibration.maps.bad[index] != 0 || !std::isfinite(values[index])) return;
    BlockSum& block =
        sums[pixel_class][index_of(column / 2 / shape.block, row / 2 / shape.block, shape.width)];
    block.sum += property.scale * (values[index] - samples[pixel_class].mean);
    ++block.count;
  });

  std::array<ReducedMap, 4> maps;
  for (std::size_t i = 0; i < maps.size(); ++i) {
    maps[i] = shape;
    maps[i].values.resize(blocks);
    std::transform(sums[i].begin(), sums[i].end(), maps[i].values.begin(), shown_value);
  }
  return maps;
}

double scale_end(const std::array<ReducedMap, 4>& maps) {
  std::vector<double> sizes;
  for (const ReducedMap& map : maps) {
    for (const double value : map.values) {
      if (std::isfinite(value)) sizes.push_back(std::abs(value));
    }
  }
  if (sizes.empty()) return 1;
  const auto rank = static_cast<std::ptrdiff_t>(0.99 * static_cast<double>(sizes.size() - 1));
  std::nth_element(sizes.begin(), sizes.begin() + rank, sizes.end());
  const double size = sizes[static_cast<std::size_t>(rank)];
  if (!(size > 0)) return 1;
  const double decade = std::pow(10, std::floor(std::log10(size)));
  for (const double factor : {1.0, 2.0, 5.0}) {
    if (factor * decade >= size) return factor * decade;
  }
  return 10 * decade;
}

IndexedImage diverging_image(const ReducedMap& map, double end) {
  IndexedImage image{map.width, map.height, {}, {}};
  constexpr double middle = (kLevels - 1) / 2.0;
  for (std::size_t level = 0; level < kLevels; ++level) {
    image.palette[level] = diverging_colour(static_cast<double>(level) / middle - 1);
  }
  image.palette[kNoValue] = kNoValueColour;
  image.pixels.reserve(map.values.size());
  for (const double value : map.values) {
    const double level = middle * (1 + std::clamp(value / end, -1.0, 1.0));
    image.pixels.push_back(std::isfinite(value) ? static_cast<std::uint8_t>(std::lround(level))
                                                : kNoValue);
  }
  return image;
}

BadPixelMap bad_pixel_map(const Calibration& calibration) {
  BadPixelMap map;
  map.block = block_for(calibration.width, calibration.height, kLongestFrameSide);
  map.image.width = divided_up(calibration.width, map.block);
  map.image.height = divided_up(calibration.height, map.block);
  std::vector<int> counts(pixel_count(map.image.width, map.image.height));
  for_each_pixel(calibration, [&](std::size_t, int column, int row, std::size_t index) {
    if (calibration.maps.bad[index] == 0) return;
    ++counts[index_of(column / map.block, row / map.block, map.image.width)];
  });
  map.most = *std::max_element(counts.begin(), counts.end());
  map.image.palette[0] = diverging_colour(0);
  for (std::size_t level = 1; level < 256; ++level) {
    map.image.palette[level] = diverging_colour(0.4 + 0.6 * static_cast<double>(level) / 255);
  }
  for (const int count : counts) {
    const int level = count == 0 ? 0 : std::max(1, 255 * count / map.most);
    map.image.pixels.push_back(static_cast<std::uint8_t>(level));
  }
  return map;
}

}  // namespace kv::polarization
