// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "toolkit/calibration/fit/class_normals.h"

#include <algorithm>

namespace kv::polarization {

ClassNormal::ClassNormal(const Source& source, const std::vector<std::size_t>& frames,
                         std::size_t number)
    : mean_black_(source.black[number]),
      offset_(ideal_stokes(vector_of(source.black)) / source.scale) {
  Eigen::Matrix3d normal = Eigen::Matrix3d::Zero();
  Eigen::Matrix3d signal = Eigen::Matrix3d::Zero();
  Eigen::Matrix3d dark = Eigen::Matrix3d::Zero();
  Eigen::Vector3d class_sums = Eigen::Vector3d::Zero();
  weighted_u_.setZero();
  double signal_sum = 0;
  for (const std::size_t index : frames) {
    const StackEntry& entry = source.stack[index];
    const auto& regressors = entry.terms.regressors;
    const Eigen::Vector3d u =
        Eigen::Vector3d(regressors[1], regressors[2], regressors[3]) - offset_;
    const double weight = entry.terms.weights[number];
    const double mean = entry.means.classes[number] - mean_black_;
    const double counts = std::max(0.0, mean);
    normal += weight * u * u.transpose();
    signal += weight * weight * counts * u * u.transpose();
    dark += weight * weight * u * u.transpose();
    class_sums += weight * mean * u;
    weighted_u_ += weight * u;
    weights_ += weight;
    signal_sum += weight * counts;
  }
  inverse_ = normal.inverse();
  Eigen::Matrix3d u_of_light;
  for (Eigen::Index column = 0; column < 3; ++column) {
    u_of_light.col(column) = ideal_stokes(source.responses.col(column)) / source.scale;
  }
  to_light_ = u_of_light.transpose();
  mean_light_ = to_light_ * (inverse_ * class_sums);
  signal_covariance_ = inverse_ * signal * inverse_;
  dark_covariance_ = inverse_ * dark * inverse_;
  signal_residual_ = signal_sum - (inverse_ * signal).trace();
  dark_residual_ = weights_ - (inverse_ * dark).trace();
}

ClassNormal::Solution ClassNormal::solve(const PixelMoments& pixel, double black) const {
  const double step = mean_black_ - black;
  const Eigen::Vector3d sums =
      pixel.moments.tail<3>() - pixel.moments[0] * offset_ + step * weighted_u_;
  const Eigen::Vector3d deviation = inverse_ * sums;  // from the class's response, in u
  const double squares = pixel.squares + 2 * step * pixel.moments[0] + step * step * weights_;
  return {mean_light_ + to_light_ * deviation, std::max(0.0, squares - deviation.dot(sums))};
}

double ClassNormal::expected_residual(double gain, double dark_variance) const {
  return gain * signal_residual_ + dark_variance * dark_residual_;
}

Eigen::Matrix3d ClassNormal::covariance(double gain, double dark_variance) const {
  return to_light_ * (gain * signal_covariance_ + dark_variance * dark_covariance_) *
         to_light_.transpose();
}

Eigen::Vector3d ClassNormal::black_error() const { return to_light_ * (inverse_ * weighted_u_); }

}  // namespace kv::polarization
