// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "toolkit/api/whole_frame.h"

#include <algorithm>

#include "toolkit/api/request_checks.h"

namespace kv::polarization {
namespace {

/// Room for those planes of a smaller frame, with their full scales.
PlaneViews scratch_views(const PlaneViews& wanted, int width, int height, StripScratch& scratch) {
  const std::size_t pixels = pixel_count(width, height);
  scratch.levels.resize(kPlanes.size() * pixels);
  PlaneViews views = wanted;
  if (!wanted.normalized_stokes.empty()) {
    scratch.loose_pairs.resize(2 * pixels);
    views.normalized_stokes = scratch.loose_pairs;
  }
  for (const PlaneTraits& traits : kPlanes) {
    if (traits.element != PlaneElement::level) continue;
    LevelView& view = views.level(traits.plane);
    if (!view.levels.empty()) {
      view.levels = std::span(scratch.levels).subspan(index_of(traits.plane) * pixels, pixels);
    }
  }
  return views;
}

/// Copies `count` pixels from position `from` of some planes to position `to` of others.
void copy_pixels(const PlaneViews& source, std::size_t from, const PlaneViews& target,
                 std::size_t to, std::size_t count) {
  if (!target.normalized_stokes.empty()) {
    std::copy_n(source.normalized_stokes.begin() + static_cast<std::ptrdiff_t>(2 * from), 2 * count,
                target.normalized_stokes.begin() + static_cast<std::ptrdiff_t>(2 * to));
  }
  for (const PlaneTraits& traits : kPlanes) {
    if (traits.element != PlaneElement::level) continue;
    const LevelView& view = target.level(traits.plane);
    if (view.levels.empty()) continue;
    std::copy_n(source.level(traits.plane).levels.begin() + static_cast<std::ptrdiff_t>(from),
                count, view.levels.begin() + static_cast<std::ptrdiff_t>(to));
  }
}

/// A call ends with two rows that take other ways than those above them, and rows above others must
/// not: its last row pair is filled again from a call into scratch, which sees the rows below. Even
/// heights, as an odd last row is computed by single pixels.
void fill_levels_above_others(PolarizationProcessor* handle, const FramePart& frame, int first,
                              int last, const PlaneViews& planes, StripScratch& scratch) {
  call_library(handle, frame.rows(first, last - first),
               rows_of(planes, frame.width, first, last - first));
  const PlaneViews spare = scratch_views(planes, frame.width, 4, scratch);
  call_library(handle, frame.rows(last - 2, 4), spare);
  copy_pixels(spare, 0, planes, pixel_count(frame.width, last - 2), pixel_count(frame.width, 2));
}

/// Row pairs that make one call in fill_with_weights; their planes stay in the caches.
constexpr int kRowPairsACall = 8;

/// Some row pairs of a frame, side by side as one of two rows, which has no vector area. Behind
/// each stands its last column but one again, so that the last column sees the neighbour that it
/// has at the frame's edge, and one more where that keeps the mosaic.
class SideBySide {
 public:
  SideBySide(PolarizationProcessor* handle, const FramePart& frame, const PlaneViews& planes,
             StripScratch& scratch)
      : handle_(handle),
        frame_(frame),
        planes_(planes),
        scratch_(scratch),
        piece_width_(frame.width + 2 - frame.width % 2) {}

  void fill(int first, int row_pairs) {
    FramePart wide = frame_.rows(first, 2);
    wide.width = piece_width_ * row_pairs;
    scratch_.samples.resize(pixel_count(wide.width, 2));
    for (int row = 0; row < 2 * row_pairs; ++row) {
      copy_row(frame_.samples + pixel_count(frame_.width, first + row),
               scratch_.samples.data() + place(wide.width, row));
    }
    wide.samples = scratch_.samples.data();
    const PlaneViews results = scratch_views(planes_, wide.width, 2, scratch_);
    call_library(handle_, wide, results);
    for (int row = 0; row < 2 * row_pairs; ++row) {
      copy_pixels(results, place(wide.width, row), planes_, pixel_count(frame_.width, first + row),
                  static_cast<std::size_t>(frame_.width));
    }
  }

 private:
  std::size_t place(int wide_width, int row) const {
    return pixel_count(wide_width, row % 2) + pixel_count(piece_width_, row / 2);
  }

  void copy_row(const std::uint16_t* row, std::uint16_t* piece) const {
    std::copy_n(row, frame_.width, piece);
    std::copy_n(row + frame_.width - 2, piece_width_ - frame_.width, piece + frame_.width);
  }

  PolarizationProcessor* handle_;
  const FramePart& frame_;
  const PlaneViews& planes_;
  StripScratch& scratch_;
  int piece_width_;
};

}  // namespace

void fill_as_library(PolarizationProcessor* handle, const FramePart& frame, int first, int last,
                     const PlaneViews& planes, StripScratch& scratch) {
  PlaneViews levels = planes;
  if (packs_pairs(frame.width, frame.height) && !planes.normalized_stokes.empty()) {
    levels.normalized_stokes = {};
    fill_placed_pairs(handle, frame, first, last, planes.normalized_stokes, scratch.pairs);
  }
  if (wanted_of(levels).empty()) return;
  if (last < frame.height) {
    fill_levels_above_others(handle, frame, first, last, levels, scratch);
  } else {
    call_library(handle, frame.rows(first, last - first),
                 rows_of(levels, frame.width, first, last - first));
  }
}

void fill_with_weights(PolarizationProcessor* handle, const FramePart& frame, int first, int last,
                       const PlaneViews& planes, StripScratch& scratch) {
  SideBySide row_pairs(handle, frame, planes, scratch);
  for (int row = first; row + 1 < last; row += 2 * kRowPairsACall) {
    row_pairs.fill(row, std::min(kRowPairsACall, (last - row) / 2));
  }
  if ((last - first) % 2 != 0) row_pairs.fill(last - 2, 1);
}

}  // namespace kv::polarization
