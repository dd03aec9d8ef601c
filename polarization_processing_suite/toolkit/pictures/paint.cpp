// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "toolkit/pictures/paint.h"

#include <algorithm>
#include <cmath>

namespace kv::polarization {
namespace {

std::uint8_t channel_of(const Colour& colour, int channel, int channels) {
  return channels == 1 ? colour[1] : colour[static_cast<std::size_t>(channel)];
}

}  // namespace

void fill(Picture& picture, const Box& box, const Colour& colour) {
  const int right = std::min(box.left + box.width, picture.width);
  const int bottom = std::min(box.top + box.height, picture.height);
  for (int row = std::max(box.top, 0); row < bottom; ++row) {
    for (int column = std::max(box.left, 0); column < right; ++column) {
      std::uint8_t* pixel = picture.pixel(column, row);
      for (int i = 0; i < picture.channels; ++i) pixel[i] = channel_of(colour, i, picture.channels);
    }
  }
}

void cover(Picture& picture, int column, int row, const Colour& colour, double coverage) {
  if (coverage <= 0.0 || column < 0 || row < 0 || column >= picture.width ||
      row >= picture.height) {
    return;
  }
  std::uint8_t* pixel = picture.pixel(column, row);
  for (int i = 0; i < picture.channels; ++i) {
    const double below = pixel[i];
    const double above = channel_of(colour, i, picture.channels);
    pixel[i] =
        static_cast<std::uint8_t>(std::lround(below + (above - below) * std::min(coverage, 1.0)));
  }
}

void paste(const Picture& source, Picture& target, int left, int top) {
  for (int row = 0; row < source.height; ++row) {
    const std::uint8_t* from =
        source.bytes.data() + static_cast<std::size_t>(row) * source.row_size();
    std::uint8_t* to = target.pixel(left, top + row);
    if (source.channels == target.channels) {
      std::copy_n(from, source.row_size(), to);
    } else {
      for (int column = 0; column < source.width; ++column, to += 3) {
        to[0] = to[1] = to[2] = from[column];
      }
    }
  }
}

}  // namespace kv::polarization
