// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "toolkit/calibration/fit/solved_angles.h"

#include <cmath>
#include <numbers>
#include <string>

#include "kv/polarization/fault.h"

namespace kv::polarization {
namespace {

using Points = Eigen::Matrix<double, Eigen::Dynamic, 3>;

[[noreturn]] void refuse_angles(const std::string& why) {
  throw Fault(FaultKind::argument, "the source's angles cannot be found: " + why +
                                       "; 6 frames or more, spread over half a turn, would do");
}

/// The Stokes estimates of fully polarized light lie on a cone, u^T Q u = 0, whatever the angles
/// and levels; how it leans and how wide it is is the mean sensor.
Eigen::Matrix3d fit_cone(const Points& points) {
  Eigen::Matrix<double, Eigen::Dynamic, 6> products(points.rows(), 6);
  for (Eigen::Index i = 0; i < points.rows(); ++i) {
    const Eigen::Vector3d u = points.row(i).transpose() / points(i, 0);
    products.row(i) << u[0] * u[0], 2 * u[0] * u[1], 2 * u[0] * u[2], u[1] * u[1], 2 * u[1] * u[2],
        u[2] * u[2];
  }
  const Eigen::JacobiSVD<Eigen::MatrixXd> svd(products, Eigen::ComputeFullV);
  // The smallest singular value is the fit's residual; the next one tells whether it is the only.
  if (svd.singularValues()[4] < 0.02 * svd.singularValues()[0]) {
    refuse_angles("they are too few or too close to each other");
  }
  const Eigen::VectorXd q = svd.matrixV().col(5);
  Eigen::Matrix3d cone;
  cone << q[0], q[1], q[2], q[1], q[3], q[4], q[2], q[4], q[5];
  // Positive across the axis, negative along it.
  return cone(1, 1) + cone(2, 2) < 0 ? Eigen::Matrix3d(-cone) : cone;
}

/// The weights of u that give levels as near to 1 + drift x time as can be; the cone leaves them
/// open.
Eigen::Vector3d fit_level(const Points& points, double& deviation) {
  const Eigen::Index count = points.rows();
  const bool drifts = count >= 8;
  Eigen::MatrixXd terms(count, drifts ? 4 : 3);
  terms.leftCols(3) = points;
  if (drifts) terms.col(3) = -Eigen::VectorXd::LinSpaced(count, -1, 1);
  const Eigen::VectorXd ones = Eigen::VectorXd::Ones(count);
  const Eigen::VectorXd solution = terms.colPivHouseholderQr().solve(ones);
  deviation = (terms * solution - ones).norm() / std::sqrt(static_cast<double>(count));
  return solution.head(3);
}

}  // namespace

double solve_angles(std::vector<ClassLight>& frames,
                    const std::optional<Eigen::Vector4d>& unpolarized) {
  if (frames.size() < 6) refuse_angles("there are " + std::to_string(frames.size()) + " frames");
  Points points(static_cast<Eigen::Index>(frames.size()), 3);
  for (Eigen::Index i = 0; i < points.rows(); ++i) {
    points.row(i) = ideal_stokes(frames[static_cast<std::size_t>(i)].means);
  }
  points /= points.col(0).mean();
  const Eigen::Matrix3d cone = fit_cone(points);
  double deviation = 0;
  Eigen::Vector3d level = fit_level(points, deviation);
  if (unpolarized) {
    // No S1 and S2 there: of the cone's three squares that of S0 alone is left.
    level = -(cone * ideal_stokes(*unpolarized));
    level /= (points * level).mean();
  }

  // With S0 = level^T u, what is left of the scaled cone is S1^2 + S2^2.
  const double scale = -level.dot(cone.fullPivLu().solve(level));
  const Eigen::SelfAdjointEigenSolver<Eigen::Matrix3d> rest(scale * cone +
                                                            level * level.transpose());
  if (!(scale > 0) || !(rest.eigenvalues()[1] > 0)) {
    refuse_angles("the class means are not those of polarized light that was turned");
  }
  const Eigen::Vector3d s1 = std::sqrt(rest.eigenvalues()[2]) * rest.eigenvectors().col(2);
  Eigen::Vector3d s2 = std::sqrt(rest.eigenvalues()[1]) * rest.eigenvectors().col(1);
  // Counter-clockwise is the way from the class of 0 degrees to that of 45.
  if (s1[1] * s2[2] - s1[2] * s2[1] < 0) s2 = -s2;

  const auto angle_of = [&](Eigen::Index i) {
    const Eigen::Vector3d u = points.row(i);
    return std::atan2(s2.dot(u), s1.dot(u)) * 90 / std::numbers::pi;
  };
  const double turn = frames.front().angle - angle_of(0);
  for (Eigen::Index i = 1; i < points.rows(); ++i) {
    frames[static_cast<std::size_t>(i)].angle = half_turn(angle_of(i) + turn);
  }
  return deviation;
}

}  // namespace kv::polarization
