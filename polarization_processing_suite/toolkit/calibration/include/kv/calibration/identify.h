// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <array>
#include <optional>
#include <string>
#include <vector>

#include "kv/polarization/frame.h"
#include "kv/polarization/mosaic.h"
#include "kv/polarization/region.h"

namespace kv::polarization {

// Which mosaic a sensor has, from two frames of polarized light, such as of a film or a screen that
// was turned in between.
//
// Polarizers at right angles lie on the diagonals of a cell. The differences along its diagonals,
// top left less bottom right, and top right less bottom left, are a vector that turns by twice the
// angle of the light. Polarizers elsewhere turn it by a constant (top left at another angle) or
// turn its sense (top right 45 degrees to the other side). So there are eight mosaics, the four
// phases and their mirror images, and what can be told of them is:
//
// - From one frame: nothing. Its own redundancy, I0 + I90 = I45 + I135, holds in all eight alike.
// It
//   tells only whether crossed polarizers lie on the diagonals at all.
// - From a known turn between two frames: the sense. It leaves four of the eight: two phases, whose
//   angles differ by 90 degrees, {0, 90} or {45, 135}, and the mirror images of the others. The
//   turn must be known with its sign, and be far from multiples of 90 degrees, whose two senses
//   look alike; 45 is best.
// - From a known angle of the light in the first frame, too: which one. The zero of the angles is
//   the one of that angle.
// - From a known angle alone, with a turn of 0: one, if the angle is known to a few degrees and is
//   far from multiples of 22.5; two at these, one of either sense. At multiples of 45 one of the
//   two is a mirror image.

/// One of the eight.
struct MosaicCandidate {
  PolarPhase phase = kv_polar_phase_0;  ///< of the sensor's first pixel, by the origin given

  /// With the phase, planes and maps show angles of the turned sign: the image, or the sensor's
  /// wiring, is a mirror image. Turn the image over, or its angles.
  bool mirrored = false;

  /// Probability, if all that were possible were equally likely before: 0 to 1.
  double confidence = 0;
};

/// What is known of two frames.
struct TurnedLight {
  /// From the first frame to the second, degrees, counter-clockwise as one sees it in the image.
  double turn = 0;
  std::optional<double> angle_of_first{};  ///< of the light in the first frame, degrees
  bool may_be_mirrored = true;             ///< false where the image is known to be none
  int x_origin = 0;                        ///< of the frames on the sensor, as in Mosaic
  int y_origin = 0;                        ///< likewise
  std::optional<Rectangle> region{};       ///< where the light is; all of the frame by default
  double black_level = 0;                  ///< counts

  /// Standard deviation of what was turned by hand and of what the sensor's unevenness does to
  /// angles, degrees, above 0. The noise of the frames comes to it.
  double angle_error = 3;
};

/// What two frames tell of their mosaic.
struct MosaicIdentity {
  /// By falling confidence; four or eight.
  std::vector<MosaicCandidate> candidates;

  /// Whether the first candidate alone is left, with a confidence of 0.99.
  bool is_told = false;

  /// One line for people: what was found, or why nothing can be told and what would help.
  std::string verdict;

  /// What was measured; NaN where there is nothing to measure it from.
  std::array<double, 2> dolp{};         ///< of each frame
  std::array<double, 2> angle_sigma{};  ///< of each frame's angle, by the scatter of cells, degrees

  /// How far the angle turned, by the sense of phase 0: above -90 up to 90 degrees.
  double turn = 0;

  /// Difference of the sums of the diagonals over S0, the greater of both frames: near 0 in a
  /// mosaic.
  double imbalance = 0;
};

/// Counts cells of the frame's own grid that lie within the region and have no sample at full
/// scale. No candidate gets a confidence of more than its share where the light is polarized by
/// less than 0.05 or five of its standard deviations, the diagonals differ by more than 0.1, or no
/// candidate fits within four standard deviations.
///
/// Throws Fault of kind argument for frames that check() refuses or that differ in size, a negative
/// origin, a region that is not within the frame or holds no cell, and numbers that are not finite
/// or an angle error that is not above 0.
MosaicIdentity identify_mosaic(const FrameView& first, const FrameView& second,
                               const TurnedLight& light);

}  // namespace kv::polarization
