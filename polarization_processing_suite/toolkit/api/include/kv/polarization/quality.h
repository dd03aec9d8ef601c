// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "kv/polarization/noise.h"

namespace kv::polarization {

/// Why not to believe a pixel: bits of its byte in a quality map, 0 for a pixel without fault. A
/// pixel is made of the four samples of its 2x2 neighbourhood, and clipped and bad are told of it
/// when they are true of any of them.
namespace quality {
/// Any number of them may be set.
enum Flag : std::uint8_t {
  clipped = 1,       ///< a sample is at the clip level or above: Stokes values too low, angle wrong
  rescued = 2,       ///< the only clipped sample was rebuilt from the others; beside `clipped`
  dark = 4,          ///< S0 is not above 0; DoLP and angle are NaN
  dolp_above_1 = 8,  ///< more polarized than light can be: noise, an edge, or an uneven sensor
  below_noise = 16,  ///< DoLP is less than 3 of its standard deviations; wants the noise
  bad_pixel = 32,    ///< a sample is of a pixel that the map of bad pixels names
  not_compensated = 64  ///< too dark to be compensated; told only with intensity compensation
};

/// Whether to leave out a pixel with these flags: some of its samples tell nothing of the light.
constexpr bool is_unusable(std::uint8_t flags) {
  return (flags & bad_pixel) != 0 || (flags & (clipped | rescued)) == clipped;
}
}  // namespace quality

/// Which pixels of a sensor not to believe, in somebody else's memory: one byte a pixel, row by
/// row, not 0 for a bad one. It is of the whole sensor, and a frame's place on it is its mosaic's
/// origin.
struct BadPixels {
  std::span<const std::uint8_t> bytes{};  ///< empty for a sensor without bad pixels
  int width = 0;                          ///< of the sensor, pixels
  int height = 0;                         ///< of the sensor, pixels
};

/// How the samples of a frame are to be understood.
struct SampleSettings {
  float black_level = 0;  ///< counts that a sample has in the dark; subtracted from all of them

  /// The sample, black level included, from which on a pixel counts as clipped; by default the
  /// greatest one of the frame's bit depth. Many sensors saturate earlier.
  std::optional<std::uint16_t> clip_level{};

  /// Rebuilds the one clipped sample of a pixel's neighbourhood, before anything else, from
  /// I0 + I90 = I45 + I135. That holds as far as the four classes of pixels respond alike, which
  /// real sensors do to some 2 per cent: correct their gains first. Two or more clipped samples
  /// cannot be rebuilt. At a DoLP of 0.6 along the clipped polarizer DoLP is then 8 per cent less
  /// certain than on a sensor that does not clip, at 0.4 a third less, at 0.9 more certain.
  bool rescue = false;

  /// Wanted by all that is a standard deviation, or made of one.
  std::optional<SensorNoise> noise{};

  BadPixels bad_pixels{};  ///< none by default
};

}  // namespace kv::polarization
