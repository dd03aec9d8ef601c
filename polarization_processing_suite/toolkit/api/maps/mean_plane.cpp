// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "kv/polarization/mean_plane.h"

#include "toolkit/api/maps/sample_loading.h"
#include "toolkit/api/memory_checks.h"
#include "toolkit/api/packed_frame.h"
#include "toolkit/api/request_checks.h"

namespace kv::polarization {
namespace {

/// Calls `visit(upper, lower, step, count, pixel)` for runs of pixels whose samples are those at
/// upper[i], lower[i] and `step` elements from them, and the first of which is the plane's `pixel`.
template <class Visit>
void for_each_run(const FramePart& frame, Visit visit) {
  for (int row = 0; row < frame.height; ++row) {
    const std::size_t start = pixel_count(frame.width, row);
    const std::uint16_t* upper = frame.samples + start;
    const std::uint16_t* lower =
        frame.samples + pixel_count(frame.width, mirrored(row + 1, frame.height));
    const int edge = frame.width - 1;
    visit(upper, lower, frame.width - 1, start);
    // The four samples of the last column's pixels are those of the column before it.
    visit(upper + edge - 1, lower + edge - 1, 1, start + static_cast<std::size_t>(edge));
  }
}

void find_means(const std::uint16_t* __restrict upper, const std::uint16_t* __restrict lower,
                int count, std::uint16_t* __restrict means) {
  for (int i = 0; i < count; ++i) {
    means[i] =
        static_cast<std::uint16_t>((upper[i] + upper[i + 1] + lower[i] + lower[i + 1] + 2) >> 2);
  }
}

int count_above(const std::uint16_t* upper, const std::uint16_t* lower, int count, int limit) {
  int above = 0;
  for (int i = 0; i < count; ++i) {
    above += upper[i] + upper[i + 1] + lower[i] + lower[i + 1] > limit ? 1 : 0;
  }
  return above;
}

}  // namespace

void fill_mean_plane(const FrameView& frame, std::span<std::uint16_t> mean) {
  check_mosaic_frame(frame);
  check_room("mean", mean.size(), pixel_count(frame.width, frame.height));
  check_overlap({{"the frame", frame.bytes}, {"mean", std::as_bytes(mean)}});
  Buffer<std::uint16_t> room;
  for_each_run(packed(frame, {}, room),
               [&](const std::uint16_t* upper, const std::uint16_t* lower, int count,
                   std::size_t pixel) { find_means(upper, lower, count, mean.data() + pixel); });
}

std::size_t count_clipped_intensity(const FrameView& frame) {
  check_mosaic_frame(frame);
  const int limit = 2 * full_scale(frame.bit_depth);
  std::size_t clipped = 0;
  Buffer<std::uint16_t> room;
  for_each_run(packed(frame, {}, room),
               [&](const std::uint16_t* upper, const std::uint16_t* lower, int count, std::size_t) {
                 clipped += static_cast<std::size_t>(count_above(upper, lower, count, limit));
               });
  return clipped;
}

}  // namespace kv::polarization
