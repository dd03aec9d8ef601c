#include "toolkit/api/placed_pairs.h"

#include <algorithm>

namespace kv::polarization {
namespace {

/// Moves results of the library's calls to their places in the plane. Rows and columns are those of
/// the frame, and lengths are in pixels, each of which has a pair of floats.
class PairPlacer {
 public:
  PairPlacer(PolarizationProcessor* handle, const Mosaic& mosaic, const FramePart& frame,
             std::span<float> pairs, PairScratch& scratch)
      : handle_(handle),
        mosaic_(mosaic),
        frame_(frame),
        pairs_(pairs),
        scratch_(scratch),
        width_(static_cast<std::size_t>(frame.width)),
        packed_width_(4 * (width_ / 4 - 1)),
        row_pairs_((frame.height - 1) / 2) {
    scratch_.packed.resize(pairs.size());
  }

  /// Upper rows of row pairs come out whole, packed from the start. Lower rows are overwritten by
  /// them, except for the last one. The rows below the last row pair are at their places.
  void place_even_rows() {
    call(frame_, mosaic_);
    for (int pair = 0; pair < row_pairs_; ++pair) {
      place(packed_width_ * static_cast<std::size_t>(pair), 2 * pair, 0, packed_width_);
    }
    place(width_ + packed_width_ * static_cast<std::size_t>(row_pairs_ - 1), 2 * row_pairs_ - 1, 0,
          packed_width_);
    for (int row = 2 * row_pairs_; row < frame_.height; ++row) {
      place(pixel_count(frame_.width, row), row, 0, width_);
    }
  }

  /// One row further down, the lower rows but the last one are the upper rows of row pairs.
  void place_odd_rows() {
    Mosaic mosaic = mosaic_;
    mosaic.y_origin ^= 1;
    call({frame_.samples + width_, frame_.width, 2 * row_pairs_, frame_.bit_depth}, mosaic);
    for (int pair = 0; pair + 1 < row_pairs_; ++pair) {
      place(packed_width_ * static_cast<std::size_t>(pair), 2 * pair + 1, 0, packed_width_);
    }
  }

  /// The four to seven columns beside the packed ones, as a frame too narrow to be packed. They
  /// begin at an even column, so that the mosaic is the same.
  void place_right_columns() {
    const std::size_t columns = width_ - packed_width_;
    scratch_.right_columns.resize(columns * static_cast<std::size_t>(frame_.height));
    std::uint16_t* sample = scratch_.right_columns.data();
    for (int row = 0; row < frame_.height; ++row) {
      sample = std::copy_n(frame_.samples + pixel_count(frame_.width, row) + packed_width_, columns,
                           sample);
    }
    call({scratch_.right_columns.data(), static_cast<int>(columns), frame_.height,
          frame_.bit_depth},
         mosaic_);
    for (int row = 0; row < 2 * row_pairs_; ++row) {
      place(columns * static_cast<std::size_t>(row), row, packed_width_, columns);
    }
  }

 private:
  void call(const FramePart& part, const Mosaic& mosaic) {
    call_library(handle_, mosaic, part, {.normalized_stokes = scratch_.packed});
  }

  void place(std::size_t source, int row, std::size_t column, std::size_t count) {
    std::copy_n(scratch_.packed.data() + 2 * source, 2 * count,
                pairs_.data() + 2 * (pixel_count(frame_.width, row) + column));
  }

  PolarizationProcessor* handle_;
  const Mosaic& mosaic_;
  const FramePart& frame_;
  std::span<float> pairs_;
  PairScratch& scratch_;
  std::size_t width_;
  std::size_t packed_width_;
  int row_pairs_;
};

}  // namespace

void fill_placed_pairs(PolarizationProcessor* handle, const Mosaic& mosaic, const FramePart& frame,
                       std::span<float> pairs, PairScratch& scratch) {
  PairPlacer placer(handle, mosaic, frame, pairs, scratch);
  placer.place_even_rows();
  placer.place_odd_rows();
  placer.place_right_columns();
}

}  // namespace kv::polarization
