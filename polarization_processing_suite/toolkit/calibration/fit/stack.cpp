// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "toolkit/calibration/fit/stack.h"

#include <cmath>

namespace kv::polarization {

std::vector<std::size_t> used_frames(const Stack& stack, FrameKind kind) {
  std::vector<std::size_t> indices;
  for (std::size_t i = 0; i < stack.size(); ++i) {
    if (stack[i].is(kind)) indices.push_back(i);
  }
  return indices;
}

ClassValues mean_of(const Stack& stack, FrameKind kind) {
  const std::vector<std::size_t> indices = used_frames(stack, kind);
  ClassValues mean{};
  for (const std::size_t i : indices) {
    for (std::size_t number = 0; number < mean.size(); ++number) {
      mean[number] += stack[i].means.classes[number] / static_cast<double>(indices.size());
    }
  }
  return mean;
}

std::vector<ClassLight> class_lights(const Stack& stack, const ClassValues& black) {
  std::vector<ClassLight> lights;
  for (const std::size_t i : used_frames(stack, FrameKind::polarized)) {
    lights.push_back({vector_of(stack[i].means.classes) - vector_of(black), stack[i].record.angle});
  }
  return lights;
}

std::vector<double> tile_deviations(const Stack& stack, const ClassValues& black) {
  const std::vector<std::size_t> indices = used_frames(stack, FrameKind::polarized);
  if (indices.size() < 5) return {};
  const auto count = static_cast<Eigen::Index>(indices.size());
  const auto tiles = static_cast<Eigen::Index>(4 * stack[indices[0]].means.tiles.size());
  // Frames count alike, so that each is divided by its level.
  Eigen::MatrixXd light(count, 3);
  Eigen::MatrixXd means(count, tiles);
  for (Eigen::Index row = 0; row < count; ++row) {
    const TileMeans& frame = stack[indices[static_cast<std::size_t>(row)]].means;
    const Eigen::Vector3d stokes = ideal_stokes(vector_of(frame.classes) - vector_of(black));
    light.row(row) = stokes / stokes[0];
    for (Eigen::Index column = 0; column < tiles; ++column) {
      const auto number = static_cast<std::size_t>(column % 4);
      const double mean = frame.tiles[static_cast<std::size_t>(column / 4)][number];
      means(row, column) = (mean - black[number]) / (stokes[0] / 2);
    }
  }
  const Eigen::MatrixXd projection =
      light * (light.transpose() * light).ldlt().solve(light.transpose());
  const Eigen::MatrixXd residuals = means - projection * means;
  std::vector<double> deviations;
  for (Eigen::Index row = 0; row < count; ++row) {
    // A frame pulls the fit towards itself, by its leverage.
    const double left = std::max(0.05, 1 - projection(row, row));
    deviations.push_back(residuals.row(row).norm() / std::sqrt(left * static_cast<double>(tiles)));
  }
  return deviations;
}

}  // namespace kv::polarization
