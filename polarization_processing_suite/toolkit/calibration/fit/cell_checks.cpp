// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "toolkit/calibration/fit/cell_checks.h"

#include <cmath>

namespace kv::polarization {
namespace {

/// Rows: weights of 1, cos 2t and sin 2t of a cell's pixels by class; and the pseudo-inverse.
using Cell = Eigen::Matrix<double, 4, 3>;
using Inverse = Eigen::Matrix<double, 3, 4>;

constexpr double kFirstAngle = 3;  // degrees, of no special meaning
constexpr double kAngleStep = 22.5;

Inverse inverse_of(const Cell& cell) {
  return (cell.transpose() * cell).inverse() * cell.transpose();
}

/// Calls work(angle) for angles over half a turn.
template <class Work>
void for_angles(const Work& work) {
  for (int step = 0; kFirstAngle + step * kAngleStep < 180; ++step) {
    work(kFirstAngle + step * kAngleStep);
  }
}

class ErrorSum {
 public:
  void add(const Eigen::Vector3d& stokes, double angle) {
    const double dolp = std::hypot(stokes[1], stokes[2]) / stokes[0] - 1;
    const double turn = half_turn(std::atan2(stokes[2], stokes[1]) * kDegrees - angle);
    add_variances(dolp * dolp, turn * turn);
  }
  void add_variances(double dolp, double angle) {
    dolp_ += dolp;
    angle_ += angle;
    count_ += 1;
  }
  /// DoLP is relative to the source's.
  LightErrors rms(double source_dolp) const {
    return {source_dolp * std::sqrt(dolp_ / count_), std::sqrt(angle_ / count_)};
  }

 private:
  double dolp_ = 0;
  double angle_ = 0;
  double count_ = 0;
};

/// `moments(pixel)` are the sums to solve from.
template <class Moments>
Cell cell_of(const FitEvidence& evidence, const Calibration& calibration,
             const ClassNormals& normals, const std::array<std::size_t, 4>& pixels,
             const Moments& moments) {
  Cell cell = Cell::Zero();
  for (std::size_t place = 0; place < 4; ++place) {
    const std::size_t number = evidence.grid.numbers[place];
    cell.row(static_cast<Eigen::Index>(number)) =
        normals[number]
            .solve(moments(pixels[place]), calibration.maps.black[pixels[place]])
            .response;
  }
  return cell;
}

Cell mean_cell(const ClassNormals& normals) {
  Cell cell = Cell::Zero();
  for (std::size_t number = 0; number < 4; ++number) {
    cell.row(static_cast<Eigen::Index>(number)) = normals[number].mean_response();
  }
  return cell;
}

/// Ideal polarizers as the source tells their angles, with the sensor's mean gain.
Inverse ideal_inverse(const Calibration& calibration, const Cell& mean) {
  Cell cell = Cell::Zero();
  for (int number = 0; number < 4; ++number) {
    cell.row(number) = light_at(45 * number - calibration.source_offset);
  }
  return inverse_of(cell) / mean.col(0).mean();
}

std::vector<std::size_t> frames_of_half(const Stack& stack, std::size_t half) {
  std::vector<std::size_t> frames;
  for (const std::size_t index : used_frames(stack, FrameKind::polarized)) {
    if (stack[index].half == half) frames.push_back(index);
  }
  return frames;
}

/// Whether the angles of those frames determine a pixel.
bool determine(const FitEvidence& evidence, const std::vector<std::size_t>& frames) {
  std::vector<ClassLight> lights;
  lights.reserve(frames.size());
  for (const std::size_t index : frames) {
    lights.push_back({Eigen::Vector4d::Zero(), evidence.stack[index].record.angle});
  }
  return frames.size() >= 3 && spread_of_angles(lights) > 0.1;
}

/// Covariance of a cell's Stokes values whose samples have these variances.
Eigen::Matrix3d propagate(const Inverse& inverse, const Eigen::Vector4d& variances) {
  return inverse * variances.asDiagonal() * inverse.transpose();
}

}  // namespace

std::vector<std::array<std::size_t, 4>> good_cells(const PixelGrid& grid,
                                                   const Buffer<std::uint8_t>& bad) {
  constexpr std::size_t enough = 50'000;
  const int step = 1 + static_cast<int>(grid.pixels() / 4 / enough);
  const auto width = static_cast<std::size_t>(grid.width);
  std::vector<std::array<std::size_t, 4>> cells;
  for (int row = 0; row < grid.height; row += 2) {
    for (int column = 2 * (row / 2 % step); column < grid.width; column += 2 * step) {
      const std::size_t first = pixel_count(grid.width, row) + static_cast<std::size_t>(column);
      const std::array cell{first, first + 1, first + width, first + width + 1};
      if ((bad[cell[0]] | bad[cell[1]] | bad[cell[2]] | bad[cell[3]]) == 0) cells.push_back(cell);
    }
  }
  return cells;
}

LightErrors uncalibrated_errors(const FitEvidence& evidence, const Calibration& calibration) {
  const ClassNormals normals =
      class_normals(evidence.source, used_frames(evidence.stack, FrameKind::polarized));
  const Inverse ideal = ideal_inverse(calibration, mean_cell(normals));
  ErrorSum sum;
  for (const auto& pixels : good_cells(evidence.grid, calibration.maps.bad)) {
    const Cell cell = cell_of(evidence, calibration, normals, pixels,
                              [&](std::size_t pixel) { return both_halves(evidence.sums, pixel); });
    for_angles([&](double angle) { sum.add(ideal * (cell * light_at(angle)), angle); });
  }
  return sum.rms(calibration.source_dolp);
}

std::optional<CrossValidation> cross_validate(const FitEvidence& evidence,
                                              const Calibration& calibration) {
  const std::array halves{frames_of_half(evidence.stack, 0), frames_of_half(evidence.stack, 1)};
  if (!determine(evidence, halves[0]) || !determine(evidence, halves[1])) return std::nullopt;
  const std::array normals{class_normals(evidence.source, halves[0]),
                           class_normals(evidence.source, halves[1])};
  const auto half_cell = [&](std::size_t half, const std::array<std::size_t, 4>& pixels) {
    return cell_of(evidence, calibration, normals[half], pixels,
                   [&](std::size_t pixel) { return one_half(evidence.sums, half, pixel); });
  };
  ErrorSum found;
  for (const auto& pixels : good_cells(evidence.grid, calibration.maps.bad)) {
    const Eigen::Matrix3d left = inverse_of(half_cell(0, pixels)) * half_cell(1, pixels);
    for_angles([&](double angle) { found.add(left * light_at(angle), angle); });
  }
  ErrorSum expected;
  const Inverse inverse = inverse_of(mean_cell(normals[0]));
  for_angles([&](double angle) {
    const Eigen::Vector3d light = light_at(angle);
    Eigen::Vector4d variances = Eigen::Vector4d::Zero();
    for (std::size_t half = 0; half < 2; ++half) {
      for (std::size_t number = 0; number < 4; ++number) {
        variances[static_cast<Eigen::Index>(number)] += light.dot(
            normals[half][number].covariance(evidence.gain, evidence.dark_variance) * light);
      }
    }
    const Eigen::Matrix3d covariance = propagate(inverse, variances);
    const Eigen::Vector3d along(-1, light[1], light[2]);
    const Eigen::Vector3d across(0, -light[2], light[1]);
    expected.add_variances(along.dot(covariance * along),
                           across.dot(covariance * across) * kDegrees * kDegrees);
  });
  return CrossValidation{found.rms(calibration.source_dolp), expected.rms(calibration.source_dolp)};
}

std::optional<FlatCheck> check_flats(const FitEvidence& evidence, const Calibration& calibration) {
  const auto flats = static_cast<double>(used_frames(evidence.stack, FrameKind::flat).size());
  if (flats == 0) return std::nullopt;
  const ClassNormals normals =
      class_normals(evidence.source, used_frames(evidence.stack, FrameKind::polarized));
  const Inverse ideal = ideal_inverse(calibration, mean_cell(normals));
  const ClassValues means = mean_of(evidence.stack, FrameKind::flat);
  Eigen::Vector2d sum = Eigen::Vector2d::Zero();
  double squares = 0;
  double ideal_squares = 0;
  const auto cells = good_cells(evidence.grid, calibration.maps.bad);
  for (const auto& pixels : cells) {
    Eigen::Vector4d samples;
    for (std::size_t place = 0; place < 4; ++place) {
      const std::size_t number = evidence.grid.numbers[place];
      samples[static_cast<Eigen::Index>(number)] = means[number] +
                                                   evidence.sums.flat()[pixels[place]] / flats -
                                                   calibration.maps.black[pixels[place]];
    }
    const Cell cell = cell_of(evidence, calibration, normals, pixels,
                              [&](std::size_t pixel) { return both_halves(evidence.sums, pixel); });
    const Eigen::Vector3d stokes = inverse_of(cell) * samples;
    const Eigen::Vector2d share = stokes.tail<2>() / stokes[0];
    sum += share;
    squares += share.squaredNorm();
    const Eigen::Vector3d uncorrected = ideal * samples;
    ideal_squares += (uncorrected.tail<2>() / uncorrected[0]).squaredNorm();
  }
  const auto count = static_cast<double>(cells.size());
  const Eigen::Vector2d mean = sum / count;

  Eigen::Vector4d variances;
  const Inverse inverse = inverse_of(mean_cell(normals));
  const Eigen::Vector4d light = vector_of(means) - vector_of(evidence.source.black);
  const double level = (inverse * light)[0];
  for (std::size_t number = 0; number < 4; ++number) {
    const auto row = static_cast<Eigen::Index>(number);
    // A black level that is too low is so in the flats and in the fit, where most of it cancels.
    variances[row] =
        (evidence.gain * light[row] + evidence.dark_variance) / flats +
        level * level * normals[number].covariance(evidence.gain, evidence.dark_variance)(0, 0);
  }
  const Eigen::Matrix3d covariance = propagate(inverse, variances);
  return FlatCheck{std::sqrt(std::max(0.0, squares / count - mean.squaredNorm())),
                   std::sqrt(covariance(1, 1) + covariance(2, 2)) / level, mean.norm(),
                   std::sqrt(ideal_squares / count)};
}

}  // namespace kv::polarization
