// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "toolkit/calibration/fit/tile_means.h"

#include <algorithm>

#include "kv/polarization/frame.h"

namespace kv::polarization {
namespace {

constexpr int kMostTiles = 16;  // across, and down
constexpr int kLeastCells = 4;  // across a tile, and down
constexpr std::size_t kLanes = 16;

/// Sums by column within 16 columns, which keeps even and odd ones apart.
struct Lanes {
  std::array<std::uint32_t, kLanes> sums{};
  std::uint32_t clipped = 0;
};

void add_line(const std::uint16_t* __restrict samples, std::size_t count, std::uint32_t clip_level,
              Lanes& lanes) {
  std::size_t column = 0;
  for (; column + kLanes <= count; column += kLanes) {
    for (std::size_t lane = 0; lane < kLanes; ++lane) {
      lanes.sums[lane] += samples[column + lane];
    }
  }
  for (; column < count; ++column) lanes.sums[column % kLanes] += samples[column];
  std::uint32_t clipped = 0;
  for (column = 0; column < count; ++column) clipped += samples[column] >= clip_level ? 1 : 0;
  lanes.clipped += clipped;
}

/// Where tile `index` of `count` begins on a side of that many pixels: at a cell.
std::size_t tile_start(int index, int count, int side) {
  return 2 * static_cast<std::size_t>(static_cast<std::int64_t>(side / 2) * index / count);
}

int tiles_along(int side) { return std::clamp(side / 2 / kLeastCells, 1, kMostTiles); }

/// Sums over a tile by place in the cell.
struct TileSums {
  std::array<std::uint64_t, 4> places{};
  std::uint64_t clipped = 0;
};

TileSums sum_tile(const FramePart& frame, std::size_t left, std::size_t right, std::size_t top,
                  std::size_t bottom, int clip_level) {
  TileSums tile;
  for (std::size_t row = top; row < bottom; ++row) {
    Lanes lanes;
    add_line(frame.samples + row * static_cast<std::size_t>(frame.width) + left, right - left,
             static_cast<std::uint32_t>(clip_level), lanes);
    for (std::size_t lane = 0; lane < kLanes; ++lane) {
      tile.places[2 * (row % 2) + lane % 2] += lanes.sums[lane];
    }
    tile.clipped += lanes.clipped;
  }
  return tile;
}

}  // namespace

std::array<std::size_t, 4> class_numbers(const Mosaic& mosaic) {
  std::array<std::size_t, 4> numbers{};
  const CellAngles angles = cell_angles(mosaic);
  for (std::size_t place = 0; place < numbers.size(); ++place) {
    numbers[place] = static_cast<std::size_t>(angles[place] / 45);
  }
  return numbers;
}

std::size_t tile_count(int width, int height) {
  return pixel_count(tiles_along(width), tiles_along(height));
}

TileMeans tile_means(const FramePart& frame, int clip_level, WorkerPool& pool) {
  const int across = tiles_along(frame.width);
  const int down = tiles_along(frame.height);
  const auto numbers = class_numbers(frame.mosaic);
  std::vector<TileSums> sums(pixel_count(across, down));
  const auto tile_row = [&](int row) {
    for (int column = 0; column < across; ++column) {
      sums[pixel_count(across, row) + static_cast<std::size_t>(column)] =
          sum_tile(frame, tile_start(column, across, frame.width),
                   tile_start(column + 1, across, frame.width), tile_start(row, down, frame.height),
                   tile_start(row + 1, down, frame.height), clip_level);
    }
  };
  const int parts = std::min(pool.threads(), down);
  pool.run(parts, [&](int part) {
    for (int row = part; row < down; row += parts) tile_row(row);
  });

  TileMeans means;
  means.tiles.resize(sums.size());
  const auto pixels = static_cast<double>(pixel_count(frame.width, frame.height));
  for (int row = 0; row < down; ++row) {
    for (int column = 0; column < across; ++column) {
      const std::size_t tile = pixel_count(across, row) + static_cast<std::size_t>(column);
      const std::size_t cells =
          (tile_start(column + 1, across, frame.width) - tile_start(column, across, frame.width)) *
          (tile_start(row + 1, down, frame.height) - tile_start(row, down, frame.height)) / 4;
      for (std::size_t place = 0; place < 4; ++place) {
        const auto sum = static_cast<double>(sums[tile].places[place]);
        means.tiles[tile][numbers[place]] = sum / static_cast<double>(cells);
        means.classes[numbers[place]] += sum / (pixels / 4);
      }
      means.clipped_share += static_cast<double>(sums[tile].clipped) / pixels;
    }
  }
  return means;
}

}  // namespace kv::polarization
