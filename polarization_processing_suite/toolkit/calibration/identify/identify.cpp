// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "kv/calibration/identify.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <numbers>

#include "toolkit/api/memory_checks.h"
#include "toolkit/api/memory_faults.h"
#include "toolkit/api/request_checks.h"
#include "toolkit/calibration/identify/diagonal_light.h"

namespace kv::polarization {
namespace {

constexpr double kLeastDolp = 0.05;
constexpr double kLeastDolpSigmas = 5;
constexpr double kGreatestImbalance = 0.1;
constexpr double kGreatestMisfit = 4;  // standard deviations
constexpr double kToldConfidence = 0.99;

/// The same angle of polarization, above -90 up to 90 degrees.
double half_turn(double degrees) {
  const double within = std::remainder(degrees, 180);
  return within <= -90 ? 90 : within;
}

std::string degrees_text(double degrees) {
  char text[32];
  std::snprintf(text, sizeof text, "%.1f", degrees);
  return text;
}

/// Polarizers behind the frame's first pixels as one sees them in the image.
struct Arrangement {
  double top_left;
  double sense;  ///< 1: the top right one is 45 degrees further counter-clockwise; -1: back
};

Arrangement arrangement_of(const MosaicCandidate& candidate, const TurnedLight& light) {
  const CellAngles angles = cell_angles(Mosaic{candidate.phase, light.x_origin, light.y_origin});
  const double sense = (angles[1] - angles[0] + 180) % 180 == 45 ? 1 : -1;
  const double mirror = candidate.mirrored ? -1 : 1;
  return {mirror * angles[0], mirror * sense};
}

/// Squares of how far the measured angles are from those of a candidate, in variances.
double misfit_of(const MosaicCandidate& candidate, const TurnedLight& light,
                 const DiagonalLight& first, const DiagonalLight& second) {
  const Arrangement cell = arrangement_of(candidate, light);
  const auto square = [](double degrees, double variance) { return degrees * degrees / variance; };
  const double own = light.angle_error * light.angle_error;
  const double first_variance = first.angle_sigma * first.angle_sigma;
  const double turn_variance = own + first_variance + second.angle_sigma * second.angle_sigma;
  const double turn = cell.sense * (second.angle - first.angle);
  double misfit = square(half_turn(turn - light.turn), turn_variance);
  if (light.angle_of_first) {
    const double angle = cell.top_left + cell.sense * first.angle;
    misfit += square(half_turn(angle - *light.angle_of_first), own + first_variance);
  }
  return misfit;
}

std::vector<MosaicCandidate> all_candidates(bool may_be_mirrored) {
  std::vector<MosaicCandidate> all;
  for (const bool mirrored : {false, true}) {
    if (mirrored && !may_be_mirrored) break;
    for (PolarPhase phase = kv_polar_phase_0; phase <= kv_polar_phase_135; ++phase) {
      all.push_back({phase, mirrored, 0});
    }
  }
  for (MosaicCandidate& candidate : all)
    candidate.confidence = 1.0 / static_cast<double>(all.size());
  return all;
}

/// Why the light tells nothing; empty if it does.
std::string obstacle(const DiagonalLight& light, const char* frame) {
  const std::string name = std::string("the ") + frame + " frame";
  if (std::isnan(light.dolp)) {
    return name +
           " has no light below full scale in the region; take one that is neither dark "
           "nor clipped";
  }
  if (!(light.dolp >= kLeastDolp && light.dolp >= kLeastDolpSigmas * light.dolp_sigma)) {
    return name + " has light of a DoLP of " + degrees_text(100 * light.dolp) +
           " per cent only; take polarized light, such as of a film or a screen";
  }
  if (std::abs(light.imbalance) > kGreatestImbalance) {
    return name + "'s diagonals differ by " + degrees_text(100 * std::abs(light.imbalance)) +
           " per cent; take even light, on a sensor with crossed polarizers on the diagonals";
  }
  return "";
}

std::string name_of(const MosaicCandidate& candidate) {
  return "phase " + std::to_string(cell_angles(candidate.phase)[0]) +
         (candidate.mirrored ? ", mirrored" : "");
}

/// Gives each its share by the misfits; returns the least of these.
double weigh(const TurnedLight& light, const DiagonalLight& first, const DiagonalLight& second,
             std::vector<MosaicCandidate>& candidates) {
  std::vector<double> misfits;
  misfits.reserve(candidates.size());
  for (const auto& candidate : candidates) {
    misfits.push_back(misfit_of(candidate, light, first, second));
  }
  const double least = *std::min_element(misfits.begin(), misfits.end());
  if (!(least <= kGreatestMisfit * kGreatestMisfit)) return least;
  double sum = 0;
  for (std::size_t i = 0; i < candidates.size(); ++i) {
    candidates[i].confidence = std::exp((least - misfits[i]) / 2);
    sum += candidates[i].confidence;
  }
  for (MosaicCandidate& candidate : candidates) candidate.confidence /= sum;
  std::stable_sort(candidates.begin(), candidates.end(),
                   [](const auto& a, const auto& b) { return a.confidence > b.confidence; });
  return least;
}

std::string verdict_of(const MosaicIdentity& found, const TurnedLight& light, double least_misfit) {
  if (!(least_misfit <= kGreatestMisfit * kGreatestMisfit)) {
    std::string known = "a turn of " + degrees_text(light.turn);
    if (light.angle_of_first) known += " from an angle of " + degrees_text(*light.angle_of_first);
    return "the light turned by " + degrees_text(found.turn) +
           " degrees in the one or the other sense, and no mosaic sees " + known +
           " in that; tell the angles as they were";
  }
  if (found.is_told) return "the sensor is of " + name_of(found.candidates.front());
  std::string line = "the sensor may be of";
  const char* between = " ";
  for (const MosaicCandidate& candidate : found.candidates) {
    if (candidate.confidence < 1 - kToldConfidence) break;
    line += between + name_of(candidate);
    between = "; ";
  }
  const bool turn_is_poor = std::abs(std::sin(light.turn * std::numbers::pi / 90)) < 0.5;
  if (turn_is_poor) line += ". A turn near 45 degrees would tell the sense";
  if (!light.angle_of_first) line += ". The angle of the light in the first frame would tell which";
  return line;
}

void check_light(const FrameView& first, const FrameView& second, const TurnedLight& light,
                 const Rectangle& region) {
  check_mosaic_frame(first);
  check_mosaic_frame(second);
  if (first.width != second.width || first.height != second.height) {
    refuse("the two frames differ in size; they must be of the same place on the sensor");
  }
  check(Mosaic{kv_polar_phase_0, light.x_origin, light.y_origin});
  if (!std::isfinite(light.turn) || !std::isfinite(light.angle_of_first.value_or(0)) ||
      !std::isfinite(light.black_level) || !std::isfinite(light.angle_error) ||
      !(light.angle_error > 0)) {
    refuse("angles and the black level must be finite, and the error of angles above 0 degrees");
  }
  const auto& [column, row, width, height] = region;
  const bool is_within = column >= 0 && row >= 0 && width >= 2 && height >= 2 &&
                         width <= first.width - column && height <= first.height - row;
  if (!is_within || width - column % 2 < 2 || height - row % 2 < 2) {
    refuse(
        "the region is not within the frame, or holds no 2 x 2 cell that begins at an even "
        "column and row; it must");
  }
}

MosaicIdentity identify(const FrameView& first, const FrameView& second, const TurnedLight& light) {
  const Rectangle region = light.region.value_or(Rectangle{0, 0, first.width, first.height});
  check_light(first, second, light, region);
  const DiagonalLight first_light = diagonal_light(first, region, light.black_level);
  const DiagonalLight second_light = diagonal_light(second, region, light.black_level);
  MosaicIdentity found;
  found.candidates = all_candidates(light.may_be_mirrored);
  found.dolp = {first_light.dolp, second_light.dolp};
  found.angle_sigma = {first_light.angle_sigma, second_light.angle_sigma};
  // In phase 0 the top right polarizer is 45 degrees back from the top left one.
  found.turn = half_turn(first_light.angle - second_light.angle);
  found.imbalance = std::max(std::abs(first_light.imbalance), std::abs(second_light.imbalance));
  found.verdict = obstacle(first_light, "first");
  if (found.verdict.empty()) found.verdict = obstacle(second_light, "second");
  if (!found.verdict.empty()) return found;
  const double misfit = weigh(light, first_light, second_light, found.candidates);
  found.is_told = found.candidates.front().confidence >= kToldConfidence;
  found.verdict = verdict_of(found, light, misfit);
  return found;
}

}  // namespace

MosaicIdentity identify_mosaic(const FrameView& first, const FrameView& second,
                               const TurnedLight& light) {
  return with_memory_faults([&] { return identify(first, second, light); });
}

}  // namespace kv::polarization
