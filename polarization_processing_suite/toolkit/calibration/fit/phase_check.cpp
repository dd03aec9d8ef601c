// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "toolkit/calibration/fit/phase_check.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <numbers>
#include <string>

#include "kv/polarization/fault.h"

namespace kv::polarization {
namespace {

constexpr double kFarthest = 20;  // degrees

/// Orientations of the frame's first cell, by place, in the source's degrees.
using Orientations = std::array<double, 4>;

Orientations orientations_of(const ClassResponses& responses, const Mosaic& mosaic) {
  Orientations found{};
  const auto numbers = class_numbers(mosaic);
  for (std::size_t place = 0; place < found.size(); ++place) {
    const auto row = static_cast<Eigen::Index>(numbers[place]);
    found[place] = std::atan2(responses(row, 2), responses(row, 1)) * 90 / std::numbers::pi;
  }
  return found;
}

/// The greatest distance from a mosaic's nominal angles, in a source whose scale is counted in that
/// sense (1 or -1).
double distance(const Orientations& found, const Mosaic& mosaic, int sense) {
  const CellAngles nominal = cell_angles(mosaic);
  double greatest = 0;
  for (std::size_t place = 0; place < found.size(); ++place) {
    greatest = std::max(greatest, std::abs(half_turn(sense * found[place] - nominal[place])));
  }
  return greatest;
}

std::string advice(const Orientations& found, const Mosaic& mosaic) {
  std::string line;
  if (distance(found, mosaic, -1) <= kFarthest) {
    line = "they would if the source's angles were counted the other way round";
  }
  for (Mosaic other = mosaic; const PolarPhase phase : {kv_polar_phase_0, kv_polar_phase_45,
                                                        kv_polar_phase_90, kv_polar_phase_135}) {
    other.phase = phase;
    if (distance(found, other, 1) > kFarthest) continue;
    line += (line.empty() ? "" : ", or ") + std::string("the phase of ") +
            std::to_string(cell_angles(phase)[0]) + " degrees would fit";
  }
  if (!line.empty()) return line;
  // Turned by the same angle everywhere: the source's zero lies elsewhere.
  const CellAngles nominal = cell_angles(mosaic);
  const double turn = half_turn(nominal[0] - found[0]);
  Orientations turned = found;
  for (double& orientation : turned) orientation += turn;
  if (distance(turned, mosaic, 1) <= kFarthest) {
    char text[120];
    std::snprintf(text, sizeof text, "they would with %.0f degrees added to the source's angles",
                  turn);
    return text;
  }
  return "no phase fits; the angles or the frames may be mixed up";
}

}  // namespace

void check_phase(const ClassResponses& responses, const Mosaic& mosaic) {
  const Orientations found = orientations_of(responses, mosaic);
  if (distance(found, mosaic, 1) <= kFarthest) return;
  const CellAngles nominal = cell_angles(mosaic);
  std::array<long, 4> shown{};  // from 0 to 179, as nominal angles are
  std::ranges::transform(found, shown.begin(),
                         [](double angle) { return (std::lround(angle) % 180 + 180) % 180; });
  char text[240];
  std::snprintf(text, sizeof text,
                "the polarizers of the frame's first cell stand at %ld, %ld, %ld and %ld "
                "degrees by the source, but the mosaic has %d, %d, %d and %d there; ",
                shown[0], shown[1], shown[2], shown[3], nominal[0], nominal[1], nominal[2],
                nominal[3]);
  throw Fault(FaultKind::argument, text + advice(found, mosaic));
}

}  // namespace kv::polarization
