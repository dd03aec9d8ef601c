// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "kv/pictures/angle_ticks.h"

#include <algorithm>
#include <cmath>

#include "toolkit/pictures/map_checks.h"
#include "toolkit/pictures/paint.h"
#include "toolkit/pictures/panel.h"

namespace kv::polarization {
namespace {

constexpr Colour kTickColour = {255, 200, 0};
constexpr Colour kOutlineColour = {0, 0, 0};

/// Sums of Stokes values over a cell.
struct CellStokes {
  double s0 = 0;
  double s1 = 0;
  double s2 = 0;
};

CellStokes cell_stokes(const PictureMaps& maps, const Box& cell) {
  CellStokes sums;
  for (int row = cell.top; row < cell.top + cell.height; ++row) {
    std::size_t pixel = pixel_count(maps.width, row) + static_cast<std::size_t>(cell.left);
    for (int column = 0; column < cell.width; ++column, ++pixel) {
      const double s1 = maps.normalized_stokes[2 * pixel];
      const double s2 = maps.normalized_stokes[2 * pixel + 1];
      if (!std::isfinite(s1) || !std::isfinite(s2)) continue;
      const double s0 = maps.brightness[pixel];
      sums.s0 += s0;
      sums.s1 += s0 * s1;
      sums.s2 += s0 * s2;
    }
  }
  return sums;
}

/// A line through a centre, in pixels.
struct Tick {
  double centre_column;
  double centre_row;
  double right;  ///< of the half tick, from the centre to its end
  double down;
};

double distance_to(const Tick& tick, double column, double row) {
  const double x = column - tick.centre_column;
  const double y = row - tick.centre_row;
  const double square = tick.right * tick.right + tick.down * tick.down;
  const double along =
      square > 0 ? std::clamp((x * tick.right + y * tick.down) / square, -1.0, 1.0) : 0.0;
  return std::hypot(x - along * tick.right, y - along * tick.down);
}

/// With round ends and an outline, which stands out from any grey.
void draw_tick(Picture& picture, const Tick& tick, double half_width) {
  const double outline = half_width + std::max(1.0, half_width / 2);
  const int right = static_cast<int>(std::ceil(std::abs(tick.right) + outline + 1));
  const int down = static_cast<int>(std::ceil(std::abs(tick.down) + outline + 1));
  const int centre_column = static_cast<int>(tick.centre_column);
  const int centre_row = static_cast<int>(tick.centre_row);
  for (int row = centre_row - down; row <= centre_row + down; ++row) {
    for (int column = centre_column - right; column <= centre_column + right; ++column) {
      const double distance = distance_to(tick, column + 0.5, row + 0.5);
      cover(picture, column, row, kOutlineColour, outline + 0.5 - distance);
      cover(picture, column, row, kTickColour, half_width + 0.5 - distance);
    }
  }
}

void draw_cell(Picture& picture, const PictureMaps& maps, const Box& cell, double dolp_white) {
  const CellStokes sums = cell_stokes(maps, cell);
  if (!(sums.s0 > 0)) return;
  const double dolp = std::hypot(sums.s1, sums.s2) / sums.s0;
  const double angle = std::atan2(sums.s2, sums.s1) / 2;
  const int side = std::min(cell.width, cell.height);
  const double half_width = std::max(0.5, side / 24.0);
  // Leaves room for the ends' roundings and the outlines of neighbours.
  const double longest = std::max(0.0, side / 2.0 - 2 * half_width - 0.5);
  const double half_length = longest * std::min(dolp / dolp_white, 1.0);
  draw_tick(picture,
            {cell.left + cell.width / 2.0, cell.top + cell.height / 2.0,
             half_length * std::cos(angle), -half_length * std::sin(angle)},
            half_width);
}

}  // namespace

Picture angle_ticks_picture(const PictureMaps& maps, double dolp_white, int cell_size) {
  check_map(maps, maps.normalized_stokes, "normalized_stokes", 2);
  check_range_end(dolp_white, "DoLP");
  if (cell_size < 1) {
    throw Fault(FaultKind::argument, "the cells of angle ticks have a side of " +
                                         std::to_string(cell_size) + "; give at least 1 pixel");
  }
  const Picture grey = intensity_picture(maps);
  Picture picture(maps.width, maps.height, 3);
  paste(grey, picture, 0, 0);
  // Whole cells only, in the middle; small frames have a single one.
  const int width = std::min(cell_size, maps.width);
  const int height = std::min(cell_size, maps.height);
  for (int top = maps.height % height / 2; top + height <= maps.height; top += height) {
    for (int left = maps.width % width / 2; left + width <= maps.width; left += width) {
      draw_cell(picture, maps, {left, top, width, height}, dolp_white);
    }
  }
  return picture;
}

int tick_cell_size(const PictureMaps& maps) {
  return std::max(12, std::max(maps.width, maps.height) / 40);
}

Legend angle_ticks_legend(double dolp_white, int cell_size) {
  const std::string side = std::to_string(cell_size);
  return {.title = "Angle ticks",
          .scale = Swatches{{kTickColour, "direction: angle of linear polarization"},
                            {kTickColour, "length: DoLP 0 to " + short_number(dolp_white)}},
          .notes = {"means of " + side + " x " + side + " pixels", "over intensity"}};
}

}  // namespace kv::polarization
