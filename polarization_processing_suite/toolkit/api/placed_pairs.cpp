// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "toolkit/api/placed_pairs.h"

#include <algorithm>

#include "platform/memory.h"

namespace kv::polarization {
namespace {

/// Packed pairs of a band of row pairs, about. More would leave the caches before they are moved;
/// fewer would pay for more calls, each of which asks the processor for its features and ends with
/// a row of single pixels.
constexpr int kBandBytes = 4096 << 10;

/// A plane that the caches cannot hold is written past them.
constexpr std::size_t kLargePlane = 16u << 20;

/// Moves results of the library's calls to their places in the plane. Rows and columns are those of
/// the frame, and lengths are in pixels, each of which has a pair of floats.
class PairPlacer {
 public:
  PairPlacer(PolarizationProcessor* handle, const FramePart& frame, std::span<float> pairs,
             PairScratch& scratch)
      : handle_(handle),
        frame_(frame),
        pairs_(pairs),
        scratch_(scratch),
        width_(static_cast<std::size_t>(frame.width)),
        packed_width_(4 * (width_ / 4 - 1)),
        copy_(pairs.size_bytes() > kLargePlane ? platform::copy_past_caches : copy_plainly) {}

  /// `count` row pairs. Those at the frame's end bring the rows below them.
  void place_row_pairs(int first, int count) {
    const int end = first + 2 * count;
    const bool is_last = frame_.height - end <= 2;
    place_upper_rows(first, count, is_last ? frame_.height : end + 1);
    if (is_last) {
      for (int row = end; row < frame_.height; ++row) {
        place(pixel_count(frame_.width, row - first), row, 0, width_);
      }
    }
    if (count > 1) place_lower_rows(first, count);
  }

  /// The four to seven columns beside the packed ones of `count` row pairs, as a frame too narrow
  /// to be packed. They begin at an even column, so that the mosaic is the same.
  void place_right_columns(int first, int count) {
    const std::size_t columns = width_ - packed_width_;
    FramePart part = frame_.rows(first, 2 * count + 1);
    scratch_.right_columns.resize(columns * static_cast<std::size_t>(part.height));
    std::uint16_t* sample = scratch_.right_columns.data();
    for (int row = 0; row < part.height; ++row) {
      sample = std::copy_n(part.samples + pixel_count(frame_.width, row) + packed_width_, columns,
                           sample);
    }
    part.samples = scratch_.right_columns.data();
    part.width = static_cast<int>(columns);
    call(part);
    for (int row = 0; row < 2 * count; ++row) {
      place(columns * static_cast<std::size_t>(row), first + row, packed_width_, columns);
    }
  }

 private:
  static void copy_plainly(void* to, const void* from, std::size_t bytes) {
    std::copy_n(static_cast<const std::byte*>(from), bytes, static_cast<std::byte*>(to));
  }

  /// Upper rows of row pairs come out whole, packed from the start. Lower rows are overwritten by
  /// them, except for the last one.
  void place_upper_rows(int first, int count, int end) {
    call(frame_.rows(first, end - first));
    for (int pair = 0; pair < count; ++pair) {
      place(packed_width_ * static_cast<std::size_t>(pair), first + 2 * pair, 0, packed_width_);
    }
    place(width_ + packed_width_ * static_cast<std::size_t>(count - 1), first + 2 * count - 1, 0,
          packed_width_);
  }

  /// One row further down, the lower rows but the last one are the upper rows of row pairs.
  void place_lower_rows(int first, int count) {
    call(frame_.rows(first + 1, 2 * count));
    for (int pair = 0; pair + 1 < count; ++pair) {
      place(packed_width_ * static_cast<std::size_t>(pair), first + 2 * pair + 1, 0, packed_width_);
    }
  }

  void call(const FramePart& part) {
    scratch_.packed.resize(2 * pixel_count(part.width, part.height));
    call_library(handle_, part, {.normalized_stokes = scratch_.packed});
  }

  void place(std::size_t source, int row, std::size_t column, std::size_t count) {
    copy_(pairs_.data() + 2 * (pixel_count(frame_.width, row) + column),
          scratch_.packed.data() + 2 * source, 2 * count * sizeof(float));
  }

  PolarizationProcessor* handle_;
  const FramePart& frame_;
  std::span<float> pairs_;
  PairScratch& scratch_;
  std::size_t width_;
  std::size_t packed_width_;
  void (*copy_)(void*, const void*, std::size_t);
};

}  // namespace

void fill_placed_pairs(PolarizationProcessor* handle, const FramePart& frame, int first, int last,
                       std::span<float> pairs, PairScratch& scratch) {
  PairPlacer placer(handle, frame, pairs, scratch);
  const int end = std::min(last, frame.height - 1) / 2 * 2;  // of the row pairs
  placer.place_right_columns(first, (end - first) / 2);
  const int band = std::max(1, kBandBytes / (frame.width * static_cast<int>(2 * sizeof(float))));
  for (int row = first; row < end; row += 2 * band) {
    placer.place_row_pairs(row, std::min(band, (end - row) / 2));
  }
  platform::finish_copies();
}

}  // namespace kv::polarization
