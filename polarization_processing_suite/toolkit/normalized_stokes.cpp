#include "toolkit/normalized_stokes.h"

#include <algorithm>

namespace kv {
namespace {

/// Moves results of the library's calls to their places in the plane. Rows and columns are those of
/// the frame, and lengths are in pixels, each of which has a pair of floats.
class PairPlacer {
 public:
  PairPlacer(PolarizationProcessor* handle, const Frame& frame, const TransformSettings& settings,
             Planes& planes)
      : handle_(handle),
        frame_(frame),
        settings_(settings),
        planes_(planes),
        width_(static_cast<std::size_t>(frame.width)),
        packed_width_(4 * (width_ / 4 - 1)),
        row_pairs_((frame.height - 1) / 2) {}

  /// Upper rows of row pairs come out whole, packed from the start. Lower rows are overwritten by
  /// them, except for the last one. The rows below the last row pair are at their places.
  void place_even_rows() {
    call({frame_.samples.data(), frame_.width, frame_.height, frame_.bit_depth}, settings_);
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
    TransformSettings settings = settings_;
    settings.y_origin ^= 1;
    call({frame_.samples.data() + width_, frame_.width, 2 * row_pairs_, frame_.bit_depth},
         settings);
    for (int pair = 0; pair + 1 < row_pairs_; ++pair) {
      place(packed_width_ * static_cast<std::size_t>(pair), 2 * pair + 1, 0, packed_width_);
    }
  }

  /// The four to seven columns beside the packed ones, as a frame too narrow to be packed. They
  /// begin at an even column, so that the mosaic is the same.
  void place_right_columns() {
    const std::size_t columns = width_ - packed_width_;
    std::vector<std::uint16_t> samples;
    samples.reserve(columns * static_cast<std::size_t>(frame_.height));
    for (int row = 0; row < frame_.height; ++row) {
      const auto end = frame_.samples.begin() +
                       static_cast<std::ptrdiff_t>(pixel_count(frame_.width, row) + width_);
      samples.insert(samples.end(), end - static_cast<std::ptrdiff_t>(columns), end);
    }
    call({samples.data(), static_cast<int>(columns), frame_.height, frame_.bit_depth}, settings_);
    for (int row = 0; row < 2 * row_pairs_; ++row) {
      place(columns * static_cast<std::size_t>(row), row, packed_width_, columns);
    }
  }

 private:
  void call(const FramePart& part, const TransformSettings& settings) {
    call_library(handle_, settings, part, {.normalized_stokes = planes_.packed_pairs.data()});
  }

  void place(std::size_t source, int row, std::size_t column, std::size_t count) {
    std::copy_n(planes_.packed_pairs.data() + 2 * source, 2 * count,
                planes_.normalized_stokes.data() + 2 * (pixel_count(frame_.width, row) + column));
  }

  PolarizationProcessor* handle_;
  const Frame& frame_;
  const TransformSettings& settings_;
  Planes& planes_;
  std::size_t width_;
  std::size_t packed_width_;
  int row_pairs_;
};

}  // namespace

void fill_normalized_stokes(PolarizationProcessor* handle, const Frame& frame,
                            const TransformSettings& settings, Planes& planes) {
  PairPlacer placer(handle, frame, settings, planes);
  placer.place_even_rows();
  placer.place_odd_rows();
  placer.place_right_columns();
}

}  // namespace kv
