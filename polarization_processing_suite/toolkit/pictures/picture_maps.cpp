// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "kv/pictures/picture_maps.h"

#include <algorithm>

#include "toolkit/api/packed_frame.h"
#include "toolkit/api/request_checks.h"

namespace kv::polarization {
namespace {

/// The last column and row take the means of those before them.
void fill_brightness(const FramePart& frame, std::uint16_t* brightness) {
  const auto width = static_cast<std::size_t>(frame.width);
  const float scale = 65535.0f / static_cast<float>(4 * full_scale(frame.bit_depth));
  for (int row = 0; row < frame.height; ++row) {
    const int pair = std::min(row, frame.height - 2);
    const std::uint16_t* upper = frame.samples + pixel_count(frame.width, pair);
    const std::uint16_t* lower = upper + width;
    std::uint16_t* mean = brightness + pixel_count(frame.width, row);
    for (std::size_t column = 0; column + 1 < width; ++column) {
      const int sum = upper[column] + upper[column + 1] + lower[column] + lower[column + 1];
      const float level = static_cast<float>(sum) * scale + 0.5f;
      mean[column] =
          static_cast<std::uint16_t>(static_cast<int>(level < 65535.0f ? level : 65535.0f));
    }
    mean[width - 1] = mean[width - 2];
  }
}

}  // namespace

void PictureSource::fill(Processor& processor, const FrameView& frame, const Mosaic& mosaic,
                         OutputSet wanted, WeightReach reach) {
  check_cells(frame);
  planes_.reshape(frame.width, frame.height, wanted);
  if (!wanted.empty()) processor.transform(frame, mosaic, planes_.views(), reach);
  brightness_.resize(pixel_count(frame.width, frame.height));
  fill_brightness(packed(frame, mosaic, packed_), brightness_.data());
}

PictureMaps PictureSource::maps() const {
  return {.width = planes_.width(),
          .height = planes_.height(),
          .brightness = brightness_,
          .azimuth = planes_.levels(Plane::azimuth),
          .dolp = planes_.levels(Plane::dolp),
          .normalized_stokes = planes_.normalized_stokes()};
}

}  // namespace kv::polarization
