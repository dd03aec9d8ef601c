// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "kv/polarization/buffer.h"
#include "kv/polarization/mosaic.h"
#include "kv/polarization/noise.h"

namespace kv::polarization {

// The model of a pixel. Behind its polarizer a pixel of gain G, diattenuation D and orientation a
// reads, in counts above its black level, from light of the Stokes values S0, S1, S2,
//
//     x = G / 2 (S0 + D cos(2a) S1 + D sin(2a) S2).
//
// Gains are relative: their mean over the good pixels of a sensor is 1, so that Stokes values stay
// in counts. Angles are in degrees, 0 along the rows, growing counter-clockwise, as everywhere
// here. The zero is the sensor's own: the mean deviation of all good pixels from their nominal
// orientations 0, 45, 90 and 135 is 0. How far the source's scale was turned against it is
// `source_offset`.

/// A value and its standard error, by the noise of the frames.
struct Measured {
  double value = 0;  ///< in the unit that its owner tells
  double error = 0;  ///< one standard deviation of it, in the same unit
};

/// The pixels behind polarizers of one nominal orientation.
struct PixelClass {
  int nominal_angle = 0;             ///< 0, 45, 90 or 135 degrees
  std::uint64_t pixels = 0;          ///< good ones
  Measured black;                    ///< counts, mean
  Measured gain;                     ///< mean
  Measured diattenuation;            ///< mean
  Measured orientation;              ///< degrees, mean, within 90 of the nominal angle
  double gain_scatter = 0;           ///< standard deviation from pixel to pixel, noise taken off
  double diattenuation_scatter = 0;  ///< likewise
  double orientation_scatter = 0;    ///< likewise, degrees
};

/// Why a pixel is bad: bits of its byte in PixelMaps::bad, 0 for a good one.
namespace bad_pixel {
/// Any number of them may be set.
enum Reason : std::uint8_t {
  clipped = 1,       ///< at the clip level in a frame that was used
  noisy = 2,         ///< residuals far beyond the noise
  out_of_range = 4,  ///< gain, diattenuation or orientation far from those of its class
  dark_defect = 8    ///< black level or dark noise far from those of its class
};
}  // namespace bad_pixel

/// What each pixel is, row by row; all of the calibrated size.
struct PixelMaps {
  Buffer<float> black;                ///< counts
  Buffer<float> gain;                 ///< G
  Buffer<float> diattenuation;        ///< D
  Buffer<float> orientation;          ///< deviation from the nominal angle, degrees
  Buffer<float> gain_error;           ///< standard error of G
  Buffer<float> diattenuation_error;  ///< standard error of D
  Buffer<float> orientation_error;    ///< standard error of the orientation, degrees
  Buffer<std::uint8_t> bad;           ///< bits of bad_pixel::Reason
};

/// What light a frame of the stack shows.
enum class FrameKind : std::uint8_t {
  polarized,  ///< of a uniform source behind a linear polarizer
  dark,       ///< without light, at the same exposure
  flat        ///< of a uniform unpolarized source
};

/// What became of a frame of the stack.
struct FrameRecord {
  std::string name;                       ///< as it was given, such as its path in the manifest
  FrameKind kind = FrameKind::polarized;  ///< as it was given
  double angle = 0;     ///< of the polarizer as given or solved, degrees; 0 for other kinds
  bool used = false;    ///< whether the calibration is made of it
  std::string refusal;  ///< why it was not used; empty if it was
  double level = 0;     ///< mean of the samples, counts above black

  double angle_deviation = 0;  ///< degrees by which its light is off `angle`, by all frames

  /// Rms deviation of its means over tiles, up to 16 x 16 of each class, from what the other frames
  /// tell, over that of noise: about 1 for a frame that fits. 0 with fewer than 5 polarized frames.
  double excess = 0;

  /// Means of the samples of each class, 0, 45, 90 and 135 degrees, counts, black included: all
  /// that the brightness and the angle of its light were found from.
  std::array<double, 4> class_means{};
};

/// Each line of the verdict: what was found, what noise alone would give, and what that means.
struct Finding {
  std::string name;     ///< such as "cross-validation: DoLP"
  double found = 0;     ///< in `unit`
  double expected = 0;  ///< 0 where noise has no say
  std::string unit;     ///< empty for pure numbers
  bool good = false;    ///< false where a careful user would look twice
  std::string verdict;  ///< one line for people
};

/// A sensor as a fit found it.
struct Calibration {
  int width = 0;                     ///< of the calibrated region, pixels, even
  int height = 0;                    ///< likewise
  Mosaic mosaic;                     ///< phase of the sensor and origin of the region on it
  int bit_depth = 16;                ///< of the samples
  std::uint16_t clip_level = 65535;  ///< counts, black included

  SensorNoise noise;                  ///< by the stack, else as the settings had it
  std::array<PixelClass, 4> classes;  ///< of 0, 45, 90 and 135 degrees
  PixelMaps maps;                     ///< of every pixel

  double source_offset =
      0;  ///< degrees that the source's zero lies counter-clockwise of the sensor's
  double source_dolp = 1;  ///< taken for the polarizer's light: diattenuations are relative to it
  bool angles_solved = false;  ///< whether the source's angles were unknown but for one
  double condition = 0;        ///< of the mean measured analyser matrix; the ideal one has 1.41421
  std::vector<FrameRecord> frames;  ///< of the stack, used or not
  std::vector<Finding> findings;    ///< the verdict

  std::string camera;    ///< free text of the user: model and serial number
  std::string date;      ///< ISO 8601, as the user gave it; empty if not given
  std::string software;  ///< name and version of what made it
};

}  // namespace kv::polarization
