// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "toolkit/calibration/fit/class_light.h"

#include <cmath>
#include <numbers>

namespace kv::polarization {
namespace {

/// Class by class, with known levels.
ClassResponses fit_responses(const std::vector<ClassLight>& frames,
                             const std::vector<double>& levels) {
  Eigen::Matrix3d normal = Eigen::Matrix3d::Zero();
  Eigen::Matrix<double, 3, 4> sums = Eigen::Matrix<double, 3, 4>::Zero();
  for (std::size_t i = 0; i < frames.size(); ++i) {
    const Eigen::Vector3d light = levels[i] * light_at(frames[i].angle);
    normal += light * light.transpose();
    sums += light * frames[i].means.transpose();
  }
  return normal.ldlt().solve(sums).transpose();
}

/// Returns the greatest change.
double fit_levels(const std::vector<ClassLight>& frames, const ClassResponses& responses,
                  std::vector<double>& levels) {
  double sum = 0;
  std::vector<double> next(levels.size());
  for (std::size_t i = 0; i < frames.size(); ++i) {
    const Eigen::Vector4d expected = responses * light_at(frames[i].angle);
    next[i] = expected.dot(frames[i].means) / expected.squaredNorm();
    sum += next[i];
  }
  double change = 0;
  for (std::size_t i = 0; i < levels.size(); ++i) {
    next[i] *= static_cast<double>(levels.size()) / sum;
    change = std::max(change, std::abs(next[i] - levels[i]));
  }
  levels = next;
  return change;
}

}  // namespace

Eigen::Vector4d vector_of(const ClassValues& values) {
  return {values[0], values[1], values[2], values[3]};
}

Eigen::Vector3d light_at(double angle) {
  const double twice = angle * std::numbers::pi / 90;
  return {1, std::cos(twice), std::sin(twice)};
}

double half_turn(double degrees) {
  const double turned = std::remainder(degrees, 180);
  return turned == -90 ? 90 : turned;
}

Eigen::Vector3d ideal_stokes(const Eigen::Vector4d& means) {
  return {means.sum() / 2, means[0] - means[2], means[1] - means[3]};
}

ClassResponses fit_classes(const std::vector<ClassLight>& frames) {
  double sum = 0;
  for (const ClassLight& frame : frames) sum += frame.means.sum();
  std::vector<double> levels;
  levels.reserve(frames.size());
  for (const ClassLight& frame : frames) {
    levels.push_back(frame.means.sum() / sum * static_cast<double>(frames.size()));
  }
  // Levels and responses take turns. With few angles they would have a common freedom, along which
  // the turns hardly move away from the mean of the four classes.
  constexpr int most_turns = 2000;
  constexpr double least_change = 1e-9;
  ClassResponses responses = fit_responses(frames, levels);
  for (int turn = 0; turn < most_turns; ++turn) {
    if (fit_levels(frames, responses, levels) < least_change) break;
    responses = fit_responses(frames, levels);
  }
  return responses;
}

SeenLight seen_light(const ClassResponses& responses, const Eigen::Vector4d& means) {
  const Eigen::Matrix3d normal = responses.transpose() * responses;
  const Eigen::Vector3d stokes = normal.ldlt().solve(responses.transpose() * means);
  return {stokes[0], std::hypot(stokes[1], stokes[2]) / stokes[0],
          std::atan2(stokes[2], stokes[1]) * 90 / std::numbers::pi};
}

double spread_of_angles(const std::vector<ClassLight>& frames) {
  Eigen::Matrix3d normal = Eigen::Matrix3d::Zero();
  for (const ClassLight& frame : frames) {
    const Eigen::Vector3d light = light_at(frame.angle);
    normal += light * light.transpose();
  }
  const Eigen::Vector3d values =
      Eigen::SelfAdjointEigenSolver<Eigen::Matrix3d>(normal).eigenvalues();
  return values[2] > 0 ? std::sqrt(std::max(0.0, values[0]) / values[2]) : 0;
}

}  // namespace kv::polarization
