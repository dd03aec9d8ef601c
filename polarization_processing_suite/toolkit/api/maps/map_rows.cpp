// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "toolkit/api/maps/map_rows.h"

#include <algorithm>

#include "toolkit/api/maps/pixel_lines.h"
#include "toolkit/api/maps/rescue.h"
#include "toolkit/api/maps/sample_loading.h"

namespace kv::polarization {
namespace {

/// The work that the maps asked for need.
struct Needs {
  Needs(const MapSettings& settings, const MapViews& maps)
      : flags(!maps.quality.empty() || settings.samples.rescue),
        noise_flag(!maps.quality.empty() && settings.samples.noise.has_value()),
        vector_variance(noise_flag || !maps.debiased_dolp.empty() || !maps.dolp_sigma.empty() ||
                        !maps.angle_sigma.empty()),
        moments(vector_variance || !maps.s0_sigma.empty() || !maps.s1_sigma.empty() ||
                !maps.s2_sigma.empty()),
        dolp(!maps.dolp.empty() || !maps.debiased_dolp.empty() || !maps.angle_sigma.empty() ||
             !maps.quality.empty()) {}

  bool flags;
  bool noise_flag;
  bool vector_variance;
  bool moments;
  bool dolp;
};

/// Of the rows that begin like the frame's row 0 or row 1.
RotationLines rotation_lines(const CellAngles& angles, bool odd_row) {
  const std::size_t first = odd_row ? 2 : 0;
  const ContrastRotation even = rotation_of(angles[first], angles[first + 1]);
  const ContrastRotation odd = rotation_of(angles[first + 1], angles[first]);
  RotationLines lines;
  for (std::size_t i = 0; i < kChunk; ++i) {
    const auto& [s1_a, s1_b, s2_a, s2_b] = i % 2 == 0 ? even : odd;
    lines.s1_a[i] = s1_a;
    lines.s1_b[i] = s1_b;
    lines.s2_a[i] = s2_a;
    lines.s2_b[i] = s2_b;
  }
  return lines;
}

class RowMapper {
 public:
  RowMapper(const FramePart& frame, const Mosaic& mosaic, const MapSettings& settings,
            const MapViews& maps)
      : width_(frame.width),
        maps_(maps),
        needs_(settings, maps),
        loader_(frame, mosaic, settings, {needs_.flags, needs_.moments}),
        rotations_{rotation_lines(cell_angles(mosaic), false),
                   rotation_lines(cell_angles(mosaic), true)} {}

  void map_row(int row) {
    for (int column = 0; column < width_; column += kChunk) {
      loader_.load(row, column, std::min(kChunk, width_ - column), chunk_);
      start_ = pixel_count(width_, row) + static_cast<std::size_t>(column);
      const RotationLines& rotation = rotations_[static_cast<std::size_t>(row % 2)];
      map_light(rotation);
      if (needs_.moments) map_errors(rotation);
      if (!maps_.quality.empty()) map_quality();
    }
  }

 private:
  void map_light(const RotationLines& rotation) {
    chunk_.s0 = place_of(maps_.s0, 0);
    chunk_.s1 = place_of(maps_.s1, 1);
    chunk_.s2 = place_of(maps_.s2, 2);
    chunk_.dolp = place_of(maps_.dolp, 3);
    find_contrasts(chunk_);
    if (!maps_.s1.empty() || !maps_.angle.empty()) find_s1(rotation, chunk_);
    if (!maps_.s2.empty() || !maps_.angle.empty()) find_s2(rotation, chunk_);
    if (needs_.dolp) find_dolp(chunk_);
    if (aim_at(maps_.angle)) find_angle(chunk_);
  }

  void map_errors(const RotationLines& rotation) {
    find_moments(chunk_);
    if (chunk_.has_rescued) correct_rescued_moments(chunk_);
    if (needs_.vector_variance) find_vector_variance(chunk_);
    if (aim_at(maps_.debiased_dolp)) find_debiased_dolp(chunk_);
    if (aim_at(maps_.s0_sigma)) find_s0_sigma(chunk_);
    if (aim_at(maps_.s1_sigma)) find_s1_sigma(rotation, chunk_);
    if (aim_at(maps_.s2_sigma)) find_s2_sigma(rotation, chunk_);
    if (aim_at(maps_.dolp_sigma)) find_dolp_sigma(chunk_);
    if (aim_at(maps_.angle_sigma)) find_angle_sigma(chunk_);
  }

  void map_quality() {
    flag_values(chunk_);
    if (needs_.noise_flag) flag_noise(chunk_);
    std::copy_n(chunk_.flags.begin(), chunk_.count, maps_.quality.data() + start_);
  }

  /// Where the chunk's pixels are in a map, or in a line of their own if it is not wanted.
  float* place_of(std::span<float> map, std::size_t line) {
    return map.empty() ? chunk_.unwanted[line].data() : map.data() + start_;
  }

  /// Lets `result` be the chunk's pixels in a map; false if it is not wanted.
  bool aim_at(std::span<float> map) {
    if (map.empty()) return false;
    chunk_.result = map.data() + start_;
    return true;
  }

  int width_;
  const MapViews& maps_;
  Needs needs_;
  ChunkLoader loader_;
  std::array<RotationLines, 2> rotations_;
  CellChunk chunk_{};
  std::size_t start_ = 0;  // place of the chunk's first pixel in the maps
};

}  // namespace

void map_rows(const FramePart& frame, const Mosaic& mosaic, const MapSettings& settings,
              const MapViews& maps, int first, int last) {
  RowMapper mapper(frame, mosaic, settings, maps);
  for (int row = first; row < last; ++row) mapper.map_row(row);
}

}  // namespace kv::polarization
