// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "kv/calibration/calibration_check.h"

#include <Eigen/Dense>
#include <cmath>
#include <numbers>
#include <sstream>
#include <string>
#include <string_view>

#include "toolkit/api/memory_checks.h"
#include "toolkit/api/request_checks.h"

namespace kv::polarization {
namespace {

struct Range {
  double least;
  double greatest;
};

// What a pixel behind a polarizer can be at all; the fit marks more of them as bad. A
// diattenuation is relative to the source's, and its error may take it above 1.
constexpr Range kGains = {0.05, 20};
constexpr Range kMeanGains = {0.5, 2};  // it is 1 over all good pixels
constexpr Range kDiattenuations = {0.02, 1.5};
constexpr Range kDeviations = {-45, 45};
constexpr Range kBlacks = {-1000, 65535};
constexpr Range kErrors = {0, 1e6};

std::string text(double number) {
  std::ostringstream digits;
  digits << number;
  return digits.str();
}

void check_finite(const std::string& what, double value) {
  if (!std::isfinite(value)) refuse(what + " is no number; every value must be finite");
}

void check_range(const std::string& what, double value, const Range& range) {
  if (value >= range.least && value <= range.greatest) return;
  check_finite(what, value);
  refuse(what + " is " + text(value) + "; it must be from " + text(range.least) + " to " +
         text(range.greatest));
}

void check(const PixelClass& all, int angle) {
  const std::string of_class = " of the pixels of " + std::to_string(angle) + " degrees";
  if (all.nominal_angle != angle) {
    refuse("the classes are not in the order 0, 45, 90, 135 degrees: where " +
           std::to_string(angle) + " must be, there is " + std::to_string(all.nominal_angle));
  }
  const auto check_value = [&](const char* what, const Measured& value, const Range& range) {
    check_range("the " + std::string(what) + of_class, value.value, range);
    check_range("the error of the " + std::string(what) + of_class, value.error, kErrors);
  };
  check_value("black level", all.black, kBlacks);
  check_value("gain", all.gain, kGains);
  check_value("diattenuation", all.diattenuation, kDiattenuations);
  check_value("orientation", all.orientation,
              {angle + kDeviations.least, angle + kDeviations.greatest});
  check_range("the scatter of gains" + of_class, all.gain_scatter, kErrors);
  check_range("the scatter of diattenuations" + of_class, all.diattenuation_scatter, kErrors);
  check_range("the scatter of orientations" + of_class, all.orientation_scatter, kErrors);
}

double mean_gain(const Calibration& calibration) {
  double sum = 0;
  for (const PixelClass& all : calibration.classes) sum += all.gain.value;
  return sum / 4;
}

/// Of the analyser matrix of the class means.
double condition_of(const Calibration& calibration) {
  Eigen::Matrix<double, 4, 3> matrix;
  for (int row = 0; row < 4; ++row) {
    const PixelClass& all = calibration.classes[static_cast<std::size_t>(row)];
    const double twice = all.orientation.value * std::numbers::pi / 90;
    matrix.row(row) << 1, all.diattenuation.value * std::cos(twice),
        all.diattenuation.value * std::sin(twice);
    matrix.row(row) *= all.gain.value / 2;
  }
  const Eigen::Vector3d values =
      Eigen::JacobiSVD<Eigen::Matrix<double, 4, 3>>(matrix).singularValues();
  return values[0] / values[2];
}

void check_condition(const Calibration& calibration) {
  const double condition = condition_of(calibration);
  if (!(condition <= kWorstCondition)) {
    refuse("the sensor hardly tells polarization: the condition number of its classes is " +
           text(condition) + "; it must be " + text(kWorstCondition) +
           " or less, and is 1.41 for an ideal one");
  }
  // 0 where it was not computed.
  check_range("the stated condition number", calibration.condition, {0, kWorstCondition});
}

void check_map(std::string_view name, const Buffer<float>& map, const Calibration& calibration,
               const Range& range) {
  const std::size_t pixels = pixel_count(calibration.width, calibration.height);
  if (map.size() != pixels) {
    refuse("the map " + std::string(name) + " has " + std::to_string(map.size()) +
           " values; it must have one for each of " + std::to_string(pixels) + " pixels");
  }
  const auto& bad = calibration.maps.bad;
  for (std::size_t pixel = 0; pixel < pixels; ++pixel) {
    const float value = map[pixel];
    const bool is_right =
        bad[pixel] != 0 ? std::isfinite(value) : value >= range.least && value <= range.greatest;
    if (is_right) continue;
    const auto width = static_cast<std::size_t>(calibration.width);
    check_range("the value of the map " + std::string(name) + " at column " +
                    std::to_string(pixel % width) + ", row " + std::to_string(pixel / width),
                value, range);
  }
}

void check_maps(const Calibration& calibration) {
  const PixelMaps& maps = calibration.maps;
  const std::size_t pixels = pixel_count(calibration.width, calibration.height);
  if (maps.bad.size() != pixels) {
    refuse("the map bad has " + std::to_string(maps.bad.size()) +
           " values; it must have one for each of " + std::to_string(pixels) + " pixels");
  }
  check_map("black", maps.black, calibration, kBlacks);
  check_map("gain", maps.gain, calibration, kGains);
  check_map("diattenuation", maps.diattenuation, calibration, kDiattenuations);
  check_map("orientation", maps.orientation, calibration, kDeviations);
  check_map("gain_error", maps.gain_error, calibration, kErrors);
  check_map("diattenuation_error", maps.diattenuation_error, calibration, kErrors);
  check_map("orientation_error", maps.orientation_error, calibration, kErrors);
}

void check_records(const Calibration& calibration) {
  for (const FrameRecord& frame : calibration.frames) {
    for (const double value : {frame.angle, frame.level, frame.angle_deviation, frame.excess}) {
      check_finite("a value of the frame " + frame.name, value);
    }
    for (const double mean : frame.class_means) {
      check_finite("a mean of the frame " + frame.name, mean);
    }
  }
  for (const Finding& finding : calibration.findings) {
    for (const double value : {finding.found, finding.expected}) {
      check_finite("a value of the finding " + finding.name, value);
    }
  }
}

}  // namespace

void check_sides(const Calibration& calibration) {
  const int width = calibration.width;
  const int height = calibration.height;
  for (const int side : {width, height}) {
    if (side > 0 && side <= kGreatestSide && side % 2 == 0) continue;
    refuse("a calibration of " + std::to_string(width) + " x " + std::to_string(height) +
           " pixels cannot be; both sides must be even and from 2 to " +
           std::to_string(kGreatestSide));
  }
}

void check(const Calibration& calibration) {
  check_sides(calibration);
  check(calibration.mosaic);
  check_range("the bit depth", calibration.bit_depth, {1, 16});
  check_range("the clip level", calibration.clip_level, {1, 65535});
  check_range("the noise's gain", calibration.noise.gain, {0, 1e6});
  check_range("the read noise", calibration.noise.read_noise, {0, 1e6});
  check_range("the source's offset", calibration.source_offset, {-360, 360});
  check_range("the source's DoLP", calibration.source_dolp, {0, 1});
  for (int index = 0; index < 4; ++index) {
    check(calibration.classes[static_cast<std::size_t>(index)], 45 * index);
  }
  check_range("the mean gain of the classes", mean_gain(calibration), kMeanGains);
  check_condition(calibration);
  check_maps(calibration);
  check_records(calibration);
}

}  // namespace kv::polarization
