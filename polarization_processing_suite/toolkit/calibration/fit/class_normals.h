// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <Eigen/Dense>
#include <array>

#include "kv/polarization/noise.h"
#include "toolkit/calibration/fit/stack.h"

namespace kv::polarization {

/// The sums of one pixel, from PixelSums.
struct PixelMoments {
  Eigen::Vector4d moments;
  double squares;
};

/// What the pixels of one class have in common in the weighted least squares over a set of frames.
/// Pixels are fitted to u, the Stokes values that the frame's class means would have between ideal
/// polarizers: they hold the angle and the level of the lamp, and are linear in the light. A pixel
/// differs from the mean one of its class by a few per cent; that difference is what is solved.
class ClassNormal {
 public:
  struct Source {
    const Stack& stack;
    const ClassValues& black;         ///< class means, counts
    const ClassResponses& responses;  ///< by which u is turned into the source's light
    double scale;                     ///< of the regressors, counts
  };

  /// Over those frames of the stack.
  ClassNormal(const Source& source, const std::vector<std::size_t>& frames, std::size_t number);

  struct Solution {
    Eigen::Vector3d response;  ///< weights of 1, cos 2t and sin 2t
    double residual;           ///< weighted sum of squared residuals
  };
  /// For a pixel of that black level, counts.
  Solution solve(const PixelMoments& pixel, double black) const;
  const Eigen::Vector3d& mean_response() const { return mean_light_; }

  // Both are linear in the noise: terms of the signal, times counts per electron, and of the dark,
  // times counts squared.
  double expected_residual(double gain, double dark_variance) const;
  Eigen::Matrix3d covariance(double gain, double dark_variance) const;  ///< of the response
  Eigen::Vector3d black_error() const;  ///< of the response by a black level too low by 1 count

 private:
  double mean_black_;
  Eigen::Vector3d offset_;      // of the regressors against u
  Eigen::Matrix3d inverse_;     // of the normal matrix, in u
  Eigen::Vector3d weighted_u_;  // sum of w u
  double weights_ = 0;          // sum of w
  Eigen::Matrix3d to_light_;    // from weights of u to those of the source's light
  Eigen::Vector3d mean_light_;
  Eigen::Matrix3d signal_covariance_;  // of weights of u
  Eigen::Matrix3d dark_covariance_;
  double signal_residual_;
  double dark_residual_;
};

}  // namespace kv::polarization
