// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "expected_frame.h"

#include <xmmintrin.h>

#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>

#include "mosaic.h"

namespace kv::test {
namespace {

struct Stokes {
  float s0, s1, s2;
};

float reciprocal(float x) { return _mm_cvtss_f32(_mm_rcp_ss(_mm_set_ss(x))); }

float arctangent(float x) {
  float t = x * x;
  t = -0x1.891c02p-3f * t;  // -0.19194795
  t = 0x1.f1dda4p-1f + t;   // 0.9723941
  return x * t;
}

/// Angle of (S1, S2) in radians: around S1 or, from the diagonals on, around S2.
float angle_of(float s1, float s2) {
  constexpr float half_pi = 0x1.921fb6p+0f;
  constexpr float pi = 0x1.921fb6p+1f;
  const float ratio = s2 * reciprocal(s1);
  const float inverse_ratio = reciprocal(ratio);
  const float right_angle = 0 < s2 ? half_pi : -half_pi;
  const float straight_angle = 0 <= s2 ? pi : -pi;
  const float around_s1 = arctangent(ratio) + (0 < s1 ? 0.0f : straight_angle);
  const float around_s2 = (0.0f - arctangent(inverse_ratio)) + right_angle;

  // An alternative that is not chosen is a zero that still takes part in a sum.
  const bool near_axis = std::fabs(s2) < std::fabs(s1);
  const float arc = (near_axis ? around_s1 : 0.0f) + (near_axis ? 0.0f : around_s2);
  const bool on_s2_axis = !(s1 != 0) && !(s2 == 0);
  return (s1 != 0 ? arc : 0.0f) + (on_s2_axis ? right_angle : 0.0f);
}

class ExpectedFrame {
 public:
  ExpectedFrame(const TransformRequest& request, const PhaseView& view, bool sse41)
      : request_(request),
        view_(view),
        phase_(static_cast<std::size_t>(request.polar_phase)),
        sse41_(sse41),
        scaled_(request.output_max_int != (std::int32_t{1} << request.bit_depth) - 1),
        height_(static_cast<std::size_t>(request.height)),
        width_(static_cast<std::size_t>(request.width)),
        paired_rows_(height_ % 2 == 0 ? height_ - 2 : height_ - 1),
        vector_columns_(width_ < 8 ? 0 : 4 * (width_ / 4 - 1)) {}

  void fill() const {
    for (std::size_t row = 0; row < paired_rows_; row += 2) {
      fill_vector_area(row);
      fill_scalar_part(row, vector_columns_);
      fill_scalar_part(row + 1, vector_columns_);
    }
    for (std::size_t row = paired_rows_; row < height_; ++row) fill_scalar_part(row, 0);
  }

 private:
  /// NaN becomes output_max.
  std::uint16_t quantised(float v) const {
    const float below = v < request_.output_max ? v : request_.output_max;
    return static_cast<std::uint16_t>(std::lrint(below > 0 ? below : 0));
  }

  std::uint16_t linear_level(float x, bool vector_area) const {
    if (!scaled_) return quantised(x);
    const float product = x * request_.output_max;
    return quantised(vector_area ? product * reciprocal(request_.input_max)
                                 : product / request_.input_max);
  }

  std::uint16_t azimuth_level(const Stokes& stokes, bool vector_area) const {
    const float output_max = request_.output_max;
    const float degrees = angle_of(stokes.s1, stokes.s2) * 0x1.ca5dcp+4f + 90.0f;  // 28.647888
    return quantised(vector_area ? degrees * (output_max / 180.0f) : degrees * output_max / 180.0f);
  }

  std::uint16_t dolp_level(const Stokes& stokes) const {
    const float length = std::sqrt(stokes.s1 * stokes.s1 + stokes.s2 * stokes.s2);
    const float degree = length * reciprocal(stokes.s0);
    return quantised((stokes.s0 == 0 ? 0.0f : degree) * request_.output_max);
  }

  void write_levels(const Stokes& stokes, std::size_t pixel, bool vector_area) const {
    const auto& [s0, s1, s2] = stokes;
    if (request_.intensity) request_.intensity[pixel] = linear_level(s0, vector_area);
    if (request_.stokes_s1) request_.stokes_s1[pixel] = linear_level(s1, vector_area);
    if (request_.stokes_s2) request_.stokes_s2[pixel] = linear_level(s2, vector_area);
    if (request_.azimuth) request_.azimuth[pixel] = azimuth_level(stokes, vector_area);
    if (request_.dolp) request_.dolp[pixel] = dolp_level(stokes);
  }

  void write_ratios(const Stokes& stokes, std::size_t place) const {
    if (!request_.normalized_stokes) return;
    request_.normalized_stokes[2 * place] = stokes.s1 / stokes.s0;
    request_.normalized_stokes[2 * place + 1] = stokes.s2 / stokes.s0;
  }

  float sample(std::size_t row, std::size_t column) const {
    return request_.input[row * width_ + column];
  }

  /// The ratios of the area are packed one block behind the other, without regard to row ends:
  /// those of upper rows from the plane's first pixel, those of lower rows from its second row.
  void fill_vector_area(std::size_t row) const {
    for (const std::size_t lower : {0u, 1u}) {
      for (std::size_t column = 0; column < vector_columns_; ++column) {
        const Stokes stokes = vector_stokes(row + lower, column);
        write_ratios(stokes, lower * width_ + row / 2 * vector_columns_ + column);
        write_levels(stokes, (row + lower) * width_ + column, true);
      }
    }
  }

  Stokes vector_stokes(std::size_t row, std::size_t column) const {
    if (sse41_ && column % 4 == 3) --column;
    std::array<float, 4> behind{};  // The polarizers of 0, 45, 90 and 135 degrees.
    for (const std::size_t r : {row, row + 1}) {
      for (const std::size_t c : {column, column + 1}) {
        behind[kMosaics[phase_][cell_position(r, c)]] = sample(r, c);
      }
    }
    const float sum = behind[0] + behind[1] + behind[2] + behind[3];
    return {sum * reciprocal(2.0f), behind[0] - behind[2], behind[1] - behind[3]};
  }

  void fill_scalar_part(std::size_t row, std::size_t first_column) const {
    for (std::size_t column = first_column; column < width_; ++column) {
      const Stokes stokes = scalar_stokes(row, column);
      write_ratios(stokes, row * width_ + column);
      write_levels(stokes, row * width_ + column, false);
    }
  }

  Stokes scalar_stokes(std::size_t row, std::size_t column) const {
    const std::size_t beside = column + 1 < width_ ? column + 1 : column - 1;
    const std::size_t below = row + 1 < height_ ? row + 1 : row - 1;
    const std::array<float, 4> samples{sample(row, column), sample(row, beside),
                                       sample(below, column), sample(below, beside)};
    const CoefficientSet& weights = *view_[entry_at(row, column)];
    return {weighted_sum(weights.s0_weights, samples) * 0.5f,
            weighted_sum(weights.s1_weights, samples), weighted_sum(weights.s2_weights, samples)};
  }

  std::size_t entry_at(std::size_t row, std::size_t column) const {
    const bool last_pixel = row == height_ - 1 && column == width_ - 1;
    if (last_pixel && height_ % 2 != width_ % 2) return 0;
    return 2 * (row % 2) + column % 2;
  }

  static float weighted_sum(const std::array<float, 4>& weights,
                            const std::array<float, 4>& samples) {
    float sum = weights[0] * samples[0];
    for (std::size_t i = 1; i < 4; ++i) sum = sum + weights[i] * samples[i];
    return sum;
  }

  const TransformRequest& request_;
  const PhaseView& view_;
  std::size_t phase_;
  bool sse41_, scaled_;
  std::size_t height_, width_, paired_rows_, vector_columns_;
};

}  // namespace

void fill_expected_planes(const TransformRequest& request, const PhaseView& view, bool sse41) {
  ExpectedFrame(request, view, sse41).fill();
}

}  // namespace kv::test
