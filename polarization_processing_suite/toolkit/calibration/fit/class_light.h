// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <Eigen/Dense>
#include <numbers>
#include <vector>

#include "toolkit/calibration/fit/tile_means.h"

namespace kv::polarization {

/// Rows: what the mean pixel of each class makes of the light (1, cos 2t, sin 2t) of the source.
using ClassResponses = Eigen::Matrix<double, 4, 3>;

/// Class means of one polarized frame, counts above black, and the angle of its polarizer.
struct ClassLight {
  Eigen::Vector4d means;
  double angle = 0;  ///< degrees
};

/// What the class means of a frame tell of its light.
struct SeenLight {
  double level = 0;  ///< times that of the mean frame
  double dolp = 0;   ///< over that of the source
  double angle = 0;  ///< degrees, above -90 up to 90
};

Eigen::Vector4d vector_of(const ClassValues& values);

/// (1, cos 2t, sin 2t) of an angle in degrees.
Eigen::Vector3d light_at(double angle);

/// Of an angle, per radian of its double.
inline constexpr double kDegrees = 90 / std::numbers::pi;

/// An angle modulo 180 degrees, above -90 up to 90.
double half_turn(double degrees);

/// S0, S1 and S2 as ideal polarizers would tell them.
Eigen::Vector3d ideal_stokes(const Eigen::Vector4d& means);

/// Fits means = level x responses x (1, cos 2t, sin 2t), levels being free of frame by frame with a
/// mean of 1: the lamp may drift. With fewer than 4 angles, the mean of the four classes is taken
/// for the level.
ClassResponses fit_classes(const std::vector<ClassLight>& frames);

SeenLight seen_light(const ClassResponses& responses, const Eigen::Vector4d& means);

/// Smallest over largest singular value of the rows (1, cos 2t, sin 2t): 0 for angles that do not
/// determine a pixel, 0.71 for ones evenly spread over half a turn.
double spread_of_angles(const std::vector<ClassLight>& frames);

}  // namespace kv::polarization
