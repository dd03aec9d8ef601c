// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "toolkit/calibration/fit/findings.h"

#include <cmath>
#include <string>

#include "toolkit/calibration/fit/line_text.h"

namespace kv::polarization {
namespace {

/// What is found may be that much above what noise gives: more is not chance with some thousand
/// cells, but something that the model does not know.
constexpr double kFactor = 1.3;

constexpr double kAngleRepeat = 0.3;  // degrees rms that a good source's angles are off
constexpr double kFlatDolp = 0.005;   // of a source that passes for unpolarized
constexpr double kBadShare = 0.02;
constexpr double kLevelRepeat = 0.005;

Finding against_noise(const std::string& name, double found, double expected,
                      const std::string& unit) {
  Finding finding{name, found, expected, unit, found <= kFactor * expected, {}};
  finding.verdict = finding.good
                        ? line_of("%.2f times what noise gives: the model holds", found / expected)
                        : line_of(
                              "%.2f times what noise gives: the light, the angles or the sensor do "
                              "something that the model does not know",
                              found / expected);
  return finding;
}

void add_uncalibrated(const FitEvidence& evidence, Calibration& calibration) {
  const LightErrors errors = uncalibrated_errors(evidence, calibration);
  calibration.findings.push_back({"uncalibrated: DoLP error", errors.dolp, 0, "", true,
                                  "rms error of fully polarized light without a calibration"});
  calibration.findings.push_back({"uncalibrated: angle error", errors.angle, 0, "degrees", true,
                                  "rms error of the angle without a calibration"});
}

void add_cross_validation(const FitEvidence& evidence, Calibration& calibration) {
  const std::optional<CrossValidation> check = cross_validate(evidence, calibration);
  if (!check) {
    calibration.findings.push_back({"cross-validation", 0, 0, "", false,
                                    "not made: each half of the frames must have 3 angles that are "
                                    "spread over half a turn"});
    return;
  }
  const auto& [found, expected] = *check;
  calibration.findings.push_back(
      against_noise("cross-validation: DoLP", found.dolp, expected.dolp, ""));
  calibration.findings.push_back(
      against_noise("cross-validation: angle", found.angle, expected.angle, "degrees"));
  // The errors of both halves add up, and each has half of the frames.
  Finding dolp = against_noise("calibrated: DoLP error", found.dolp / 2, expected.dolp / 2, "");
  dolp.verdict = "rms error that the calibration leaves, beside the noise of a frame";
  Finding angle =
      against_noise("calibrated: angle error", found.angle / 2, expected.angle / 2, "degrees");
  angle.verdict = "rms error of the angle that it leaves";
  calibration.findings.push_back(dolp);
  calibration.findings.push_back(angle);
}

void add_flats(const FitEvidence& evidence, Calibration& calibration) {
  const std::optional<FlatCheck> check = check_flats(evidence, calibration);
  if (!check) return;
  calibration.findings.push_back({"unpolarized flat: DoLP uncalibrated", check->uncalibrated, 0, "",
                                  true,
                                  "rms DoLP that unpolarized light has without a calibration"});
  calibration.findings.push_back(
      against_noise("unpolarized flat: DoLP", check->scatter, check->expected, ""));
  const bool good = check->mean <= kFlatDolp;
  calibration.findings.push_back(
      {"unpolarized flat: mean polarization", check->mean, 0, "", good,
       good ? "common to all cells: the flat is unpolarized"
            : "common to all cells: the flat is polarized, or the black level or the polarizer's "
              "light is not what it was taken for"});
}

void add_noise(const FitSettings& settings, const FitFigures& figures, Calibration& calibration) {
  const SensorNoise& noise = calibration.noise;
  const bool given = settings.noise.has_value();
  const double expected = given ? settings.noise->gain : 0;
  if (figures.noise.gain_from_frames) {
    const bool good = !given || std::abs(noise.gain / expected - 1) < 0.1;
    calibration.findings.push_back({"photon transfer gain", noise.gain, expected,
                                    "counts per electron", good,
                                    good ? "from the residuals of the fit"
                                         : "from the residuals of the fit: not what was given"});
  } else {
    calibration.findings.push_back(
        {"photon transfer gain", noise.gain, expected, "counts per electron", given,
         given ? "as given: the stack does not tell" : "assumed: the stack does not tell"});
  }
  calibration.findings.push_back({"read noise", noise.read_noise,
                                  given ? settings.noise->read_noise : 0, "electrons",
                                  figures.noise.dark_from_frames || given,
                                  figures.noise.dark_from_frames ? "from the dark frames"
                                  : given ? "as given: the stack has fewer than 2 darks"
                                          : "assumed: the stack has fewer than 2 darks"});
}

void add_black(const FitEvidence& evidence, const FitSettings& settings, Calibration& calibration) {
  if (!used_frames(evidence.stack, FrameKind::dark).empty()) return;
  calibration.findings.push_back(
      {"black level", settings.black_level, 0, "counts", settings.black_level > 0,
       "as given: without darks, diattenuations are wrong by the share that it is off"});
}

/// How well the frames' light fits their angles; by noise, from the class means of the mean frame.
void add_angles(const FitEvidence& evidence, Calibration& calibration) {
  double squares = 0;
  double expected_squares = 0;
  double count = 0;
  const double pixels = static_cast<double>(evidence.grid.pixels()) / 4;
  const ClassResponses& responses = evidence.source.responses;
  const Eigen::Matrix<double, 3, 4> inverse =
      (responses.transpose() * responses).inverse() * responses.transpose();
  for (const std::size_t index : used_frames(evidence.stack, FrameKind::polarized)) {
    const StackEntry& entry = evidence.stack[index];
    squares += entry.record.angle_deviation * entry.record.angle_deviation;
    const Eigen::Vector4d means = vector_of(entry.means.classes) - vector_of(evidence.source.black);
    const Eigen::Vector4d variances =
        (evidence.gain * means.array().max(0) + evidence.dark_variance) / pixels;
    const Eigen::Vector3d light = inverse * means;
    const Eigen::Vector3d across(0, -light[2], light[1]);
    const double variance =
        across.dot(inverse * variances.asDiagonal() * inverse.transpose() * across) /
        std::pow(light.tail<2>().squaredNorm(), 2);
    expected_squares += variance * 28.6479 * 28.6479;  // degrees of half a radian
    count += 1;
  }
  const double found = std::sqrt(squares / count);
  calibration.findings.push_back(
      {"source angles", found, std::sqrt(expected_squares / count), "degrees",
       found <= kAngleRepeat,
       found <= kAngleRepeat ? "rms by which the light is off the angles told"
                             : "rms by which the light is off the angles told: the source's scale "
                               "is uneven or loose"});
}

void add_solved_angles(const FitEvidence& evidence, const FitFigures& figures,
                       Calibration& calibration) {
  const bool has_flats = !used_frames(evidence.stack, FrameKind::flat).empty();
  const double found = figures.level_deviation;
  calibration.findings.push_back(
      {"solved angles: lamp", found, 0, "", has_flats || found <= kLevelRepeat,
       has_flats
           ? "rms deviation of the lamp from a steady drift; the flats make it harmless"
           : "rms deviation of the lamp from a steady drift; each per cent of brightness that "
             "follows the angle unseen leaves 0.3 degrees, and flats would show it"});
}

void add_bad_pixels(const FitEvidence& evidence, Calibration& calibration) {
  double good = 0;
  for (const PixelClass& pixels : calibration.classes) good += static_cast<double>(pixels.pixels);
  const double share = 1 - good / static_cast<double>(evidence.grid.pixels());
  calibration.findings.push_back(
      {"bad pixels", 100 * share, 0, "per cent", share <= kBadShare,
       share <= kBadShare ? "of all pixels" : "of all pixels: more than sensors have"});
}

}  // namespace

void add_findings(const FitEvidence& evidence, const FitSettings& settings,
                  const FitFigures& figures, Calibration& calibration) {
  add_cross_validation(evidence, calibration);
  add_uncalibrated(evidence, calibration);
  add_flats(evidence, calibration);
  if (settings.angles_known) {
    add_angles(evidence, calibration);
  } else {
    add_solved_angles(evidence, figures, calibration);
  }
  add_noise(settings, figures, calibration);
  add_black(evidence, settings, calibration);
  add_bad_pixels(evidence, calibration);
}

}  // namespace kv::polarization
