// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "toolkit/calibration/fit/solved_stack.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "toolkit/api/memory_checks.h"
#include "toolkit/calibration/fit/findings.h"
#include "toolkit/calibration/fit/fit_checks.h"
#include "toolkit/calibration/fit/phase_check.h"
#include "toolkit/calibration/fit/sensor_maps.h"
#include "toolkit/calibration/fit/sensor_noise.h"
#include "toolkit/calibration/fit/solved_angles.h"

namespace kv::polarization {
namespace {

class StackSolver {
 public:
  StackSolver(const FitSettings& settings, StackIntake& intake, WorkerPool& pool)
      : settings_(settings), intake_(intake), pool_(pool) {}

  Calibration solve(const FrameAgain& again);

 private:
  void check_stack();
  void find_angles(const ClassValues& black);
  void begin_calibration();
  void fill_black();
  void find_noise(const ClassNormals& normals, const RawSolution& solution, std::size_t frames);
  void mark_clipped();
  void fill_records(const ClassResponses& responses);

  const FitSettings& settings_;
  StackIntake& intake_;
  WorkerPool& pool_;
  Calibration calibration_;
  FitFigures figures_;
};

/// Puts solved angles into the records.
void StackSolver::find_angles(const ClassValues& black) {
  check_known_angle(intake_.stack());
  std::vector<ClassLight> lights = class_lights(intake_.stack(), black);
  std::optional<Eigen::Vector4d> unpolarized;
  if (!used_frames(intake_.stack(), FrameKind::flat).empty()) {
    unpolarized = vector_of(mean_of(intake_.stack(), FrameKind::flat)) - vector_of(black);
  }
  figures_.level_deviation = solve_angles(lights, unpolarized);
  const std::vector<std::size_t> frames = used_frames(intake_.stack(), FrameKind::polarized);
  for (std::size_t i = 0; i < frames.size(); ++i) {
    intake_.stack()[frames[i]].record.angle = lights[i].angle;
  }
}

void StackSolver::begin_calibration() {
  const PixelGrid& grid = intake_.grid();
  calibration_.width = grid.width;
  calibration_.height = grid.height;
  calibration_.mosaic = settings_.mosaic;
  calibration_.bit_depth = intake_.reference().bit_depth;
  calibration_.clip_level = static_cast<std::uint16_t>(intake_.clip_level());
  calibration_.noise = intake_.noise();
  calibration_.source_dolp = settings_.source_dolp;
  calibration_.angles_solved = !settings_.angles_known;
  PixelMaps& maps = calibration_.maps;
  for (Buffer<float>* map :
       {&maps.black, &maps.gain, &maps.diattenuation, &maps.orientation, &maps.gain_error,
        &maps.diattenuation_error, &maps.orientation_error}) {
    map->resize(grid.pixels());
  }
  maps.bad.resize(grid.pixels());
  std::fill(maps.bad.begin(), maps.bad.end(), std::uint8_t{0});
}

void StackSolver::fill_black() {
  PixelMaps& maps = calibration_.maps;
  const std::size_t darks = used_frames(intake_.stack(), FrameKind::dark).size();
  figures_.dark_variance = calibration_.noise.dark_variance();
  if (darks == 0) {
    std::fill(maps.black.begin(), maps.black.end(), static_cast<float>(settings_.black_level));
    return;
  }
  const std::optional<double> variance = polarization::fill_black(
      intake_.grid(), intake_.sums(), darks, intake_.reference().dark_means, intake_.range(), maps);
  constexpr double rounding = 1.0 / 12;  // variance that whole counts have at least
  if (variance) figures_.dark_variance = std::max(rounding, *variance);
  figures_.noise.dark_from_frames = variance.has_value();
  figures_.black_variance = figures_.dark_variance / static_cast<double>(darks);
  // Samples that scatter by less than a third of a count round to one number for ever.
  if (variance && *variance < 0.1) figures_.black_variance += rounding;
}

void StackSolver::find_noise(const ClassNormals& normals, const RawSolution& solution,
                             std::size_t frames) {
  SensorNoise& noise = calibration_.noise;
  if (frames > 3) {
    const ClassValues residuals = mean_residuals(
        intake_.grid(), solution.residuals, static_cast<double>(frames - 3), calibration_.maps);
    const double gain = photon_transfer_gain(normals, residuals, figures_.dark_variance);
    if (gain > 0) {
      noise.gain = static_cast<float>(gain);
      figures_.noise.gain_from_frames = true;
    }
  }
  constexpr double rounding = 1.0 / 12;
  if (figures_.noise.dark_from_frames) {
    noise.read_noise = static_cast<float>(
        std::sqrt(std::max(0.0, figures_.dark_variance - rounding)) / noise.gain);
  }
}

void StackSolver::mark_clipped() {
  Buffer<std::uint8_t>& bad = calibration_.maps.bad;
  for (std::size_t pixel = 0; pixel < bad.size(); ++pixel) {
    if (intake_.sums().clipped()[pixel] == 0) continue;
    bad[pixel] = static_cast<std::uint8_t>(bad[pixel] | bad_pixel::clipped);
  }
}

void StackSolver::fill_records(const ClassResponses& responses) {
  const ClassValues black = intake_.black();
  const std::vector<std::size_t> frames = used_frames(intake_.stack(), FrameKind::polarized);
  const std::vector<double> deviations = tile_deviations(intake_.stack(), black);
  for (std::size_t i = 0; i < frames.size(); ++i) {
    StackEntry& entry = intake_.stack()[frames[i]];
    const Eigen::Vector4d means = vector_of(entry.means.classes) - vector_of(black);
    entry.record.angle_deviation =
        half_turn(seen_light(responses, means).angle - entry.record.angle);
    if (deviations.empty()) continue;
    const double variance = calibration_.noise.gain * means.mean() + figures_.dark_variance;
    const double pixels_of_mean = static_cast<double>(intake_.grid().pixels()) /
                                  static_cast<double>(4 * entry.means.tiles.size());
    entry.record.excess = deviations[i] * means.mean() / std::sqrt(variance / pixels_of_mean);
  }
}

/// Refuses frames that do not fit, and stacks that do not determine a sensor.
void StackSolver::check_stack() {
  Stack& stack = intake_.stack();
  if (used_frames(stack, FrameKind::polarized).empty()) {
    refuse("the stack has no polarized frames; it must have some at 3 angles or more");
  }
  check_frames(stack, {intake_.black(), intake_.range(), settings_.clipped_share});
  const ClassValues black = intake_.black();
  check_angles_determine(stack, class_lights(stack, black), settings_.angles_known);
  do {
    if (!settings_.angles_known) find_angles(black);
  } while (check_angles(stack, black) && !settings_.angles_known);
  check_angles_determine(stack, class_lights(stack, black), true);
}

Calibration StackSolver::solve(const FrameAgain& again) {
  check_stack();
  const ClassValues black = intake_.black();
  const ClassResponses responses = fit_classes(class_lights(intake_.stack(), black));
  check_phase(responses, settings_.mosaic);
  intake_.take_out_refused(again, pool_);

  begin_calibration();
  fill_black();
  mark_clipped();
  const PixelGrid& grid = intake_.grid();
  const std::vector<std::size_t> frames = used_frames(intake_.stack(), FrameKind::polarized);
  const ClassNormal::Source source{intake_.stack(), black, responses, intake_.reference().scale};
  const ClassNormals normals = class_normals(source, frames);
  PixelMaps& maps = calibration_.maps;
  {
    RawSolution solution{{&maps.gain, &maps.diattenuation, &maps.orientation}, {}};
    solve_pixels(grid, intake_.sums(), maps.black, normals, pool_, solution);
    find_noise(normals, solution, frames.size());
  }
  const double gain = calibration_.noise.gain;
  finish_maps(grid, normals, {gain, figures_.dark_variance, figures_.black_variance}, pool_,
              calibration_);
  summarise(grid, figures_.black_variance, calibration_);
  fill_records(responses);
  add_findings({grid, intake_.sums(), intake_.stack(), source, gain, figures_.dark_variance},
               settings_, figures_, calibration_);
  for (StackEntry& entry : intake_.stack()) calibration_.frames.push_back(std::move(entry.record));
  return std::move(calibration_);
}

}  // namespace

Calibration solve_stack(const FitSettings& settings, StackIntake& intake, const FrameAgain& again,
                        WorkerPool& pool) {
  return StackSolver(settings, intake, pool).solve(again);
}

}  // namespace kv::polarization
