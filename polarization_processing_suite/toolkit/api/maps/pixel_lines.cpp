// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "toolkit/api/maps/pixel_lines.h"

#include <cmath>
#include <limits>
#include <numbers>

#include "kv/polarization/quality.h"
#include "toolkit/api/maps/approximations.h"

namespace kv::polarization {
namespace {

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();

/// Whether DoLP is 3 of its standard deviations or more; false for a NaN.
bool stands_out(float dolp, float variance) { return dolp * dolp >= 9 * variance; }

/// Samples are read through pointers, of which compilers must be told that nothing overlaps.
void find_contrasts_of(const float* __restrict own, const float* __restrict right,
                       const float* __restrict lower, const float* __restrict diagonal, int count,
                       float* __restrict s0, float* __restrict a, float* __restrict b) {
  for (int i = 0; i < count; ++i) {
    s0[i] = ((own[i] + diagonal[i]) + (right[i] + lower[i])) * 0.5f;
    a[i] = own[i] - diagonal[i];
    b[i] = right[i] - lower[i];
  }
}

void find_moments_of(const float* __restrict own, const float* __restrict right,
                     const float* __restrict lower, const float* __restrict diagonal, int count,
                     Moments<Line>& __restrict moments) {
  for (std::size_t i = 0; i < static_cast<std::size_t>(count); ++i) {
    const Moments<float> pixel = moments_of(own[i], right[i], lower[i], diagonal[i]);
    moments.s0_s0[i] = pixel.s0_s0;
    moments.a_a[i] = pixel.a_a;
    moments.b_b[i] = pixel.b_b;
    moments.s0_a[i] = pixel.s0_a;
    moments.s0_b[i] = pixel.s0_b;
    moments.a_b[i] = pixel.a_b;
  }
}

void rotate(const Line& weights_a, const Line& weights_b, const Line& a, const Line& b, int count,
            float* __restrict stokes) {
  for (std::size_t i = 0; i < static_cast<std::size_t>(count); ++i) {
    stokes[i] = weights_a[i] * a[i] + weights_b[i] * b[i];
  }
}

/// One weight of the two is 0, the other one 1 or -1.
void find_rotated_sigma(const Line& weights_a, const Line& weights_b, CellChunk& chunk) {
  for (std::size_t i = 0; i < static_cast<std::size_t>(chunk.count); ++i) {
    chunk.result[i] = std::sqrt(weights_a[i] * weights_a[i] * chunk.moments.a_a[i] +
                                weights_b[i] * weights_b[i] * chunk.moments.b_b[i]);
  }
}

// A byte may share memory with anything.

void add_value_flags(const float* __restrict s0, const float* __restrict dolp, int count,
                     std::uint8_t* __restrict flags) {
  for (int i = 0; i < count; ++i) {
    const int dark = s0[i] > 0 ? 0 : quality::dark;
    const int above = dolp[i] > 1 ? quality::dolp_above_1 : 0;
    flags[i] = static_cast<std::uint8_t>(flags[i] | dark | above);
  }
}

void add_noise_flags(const float* __restrict dolp, const float* __restrict along, int count,
                     std::uint8_t* __restrict flags) {
  for (int i = 0; i < count; ++i) {
    const int hidden = stands_out(dolp[i], along[i]) ? 0 : quality::below_noise;
    flags[i] = static_cast<std::uint8_t>(flags[i] | hidden);
  }
}

}  // namespace

void find_contrasts(CellChunk& chunk) {
  const auto [own, right, lower, diagonal] = chunk.values;
  find_contrasts_of(own, right, lower, diagonal, chunk.count, chunk.s0, chunk.a.data(),
                    chunk.b.data());
}

void find_s1(const RotationLines& rotation, CellChunk& chunk) {
  rotate(rotation.s1_a, rotation.s1_b, chunk.a, chunk.b, chunk.count, chunk.s1);
}

void find_s2(const RotationLines& rotation, CellChunk& chunk) {
  rotate(rotation.s2_a, rotation.s2_b, chunk.a, chunk.b, chunk.count, chunk.s2);
}

void find_dolp(CellChunk& chunk) {
  for (std::size_t i = 0; i < static_cast<std::size_t>(chunk.count); ++i) {
    const float s0 = chunk.s0[i];
    const float a = chunk.a[i];
    const float b = chunk.b[i];
    const float dolp = std::sqrt(a * a + b * b) / s0;
    chunk.dolp[i] = s0 > 0 ? dolp : kNan;
  }
}

void find_angle(CellChunk& chunk) {
  for (std::size_t i = 0; i < static_cast<std::size_t>(chunk.count); ++i) {
    const float angle = half_atan2_degrees(chunk.s2[i], chunk.s1[i]);
    chunk.result[i] = chunk.s0[i] > 0 ? angle : kNan;
  }
}

void find_moments(CellChunk& chunk) {
  const auto [own, right, lower, diagonal] = chunk.variances;
  find_moments_of(own, right, lower, diagonal, chunk.count, chunk.moments);
}

void find_vector_variance(CellChunk& chunk) {
  const Moments<Line>& moments = chunk.moments;
  for (std::size_t i = 0; i < static_cast<std::size_t>(chunk.count); ++i) {
    const VectorVariance<float> variance =
        propagate<float>(chunk.s0[i], chunk.a[i], chunk.b[i],
                         {moments.s0_s0[i], moments.a_a[i], moments.b_b[i], moments.s0_a[i],
                          moments.s0_b[i], moments.a_b[i]});
    chunk.variance.along[i] = variance.along;
    chunk.variance.across[i] = variance.across;
  }
}

void find_debiased_dolp(CellChunk& chunk) {
  for (std::size_t i = 0; i < static_cast<std::size_t>(chunk.count); ++i) {
    const float dolp = chunk.dolp[i];
    const float signal = dolp * dolp / chunk.variance.across[i];
    chunk.result[i] = dolp * (1 - 0.5f * mean_of_exp_minus(signal));
  }
}

void find_s0_sigma(CellChunk& chunk) {
  for (std::size_t i = 0; i < static_cast<std::size_t>(chunk.count); ++i) {
    chunk.result[i] = std::sqrt(chunk.moments.s0_s0[i]);
  }
}

void find_s1_sigma(const RotationLines& rotation, CellChunk& chunk) {
  find_rotated_sigma(rotation.s1_a, rotation.s1_b, chunk);
}

void find_s2_sigma(const RotationLines& rotation, CellChunk& chunk) {
  find_rotated_sigma(rotation.s2_a, rotation.s2_b, chunk);
}

void find_dolp_sigma(CellChunk& chunk) {
  for (std::size_t i = 0; i < static_cast<std::size_t>(chunk.count); ++i) {
    const float sigma = std::sqrt(chunk.variance.along[i]);
    chunk.result[i] = chunk.s0[i] > 0 ? sigma : kNan;
  }
}

void find_angle_sigma(CellChunk& chunk) {
  constexpr float half_radian = 90 / std::numbers::pi_v<float>;  // degrees
  for (std::size_t i = 0; i < static_cast<std::size_t>(chunk.count); ++i) {
    const float dolp = chunk.dolp[i];
    const float sigma = std::sqrt(chunk.variance.across[i]) * half_radian / dolp;
    chunk.result[i] = stands_out(dolp, chunk.variance.along[i]) ? sigma : kNan;
  }
}

void flag_values(CellChunk& chunk) {
  add_value_flags(chunk.s0, chunk.dolp, chunk.count, chunk.flags.data());
}

void flag_noise(CellChunk& chunk) {
  add_noise_flags(chunk.dolp, chunk.variance.along.data(), chunk.count, chunk.flags.data());
}

}  // namespace kv::polarization
