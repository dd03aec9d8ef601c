// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <set>
#include <string>
#include <vector>

#include "kv/calibration/calibration_fit.h"
#include "toolkit/simulation/simulated_sensor.h"

namespace kv::test {

using namespace kv::polarization;

/// A calibration stack of a simulated sensor.
struct SimulatedStack {
  SimulatedSensor sensor;
  std::vector<Frame> frames{};
  std::vector<StackFrame> kinds{};

  void add(FrameKind kind, double told_angle, const SensorLight& light) {
    kinds.push_back({kind, told_angle, "frame " + std::to_string(frames.size())});
    frames.push_back(sensor.take(light, frames.size()));
  }
  void add_darks(int count) {
    for (; count > 0; --count) add(FrameKind::dark, 0, {});
  }
  void add_flats(int count) {
    for (; count > 0; --count) add(FrameKind::flat, 0, unpolarized_light(0.8));
  }
  void add_polarized(double angle, double s0 = 0.8) {
    add(FrameKind::polarized, angle, polarized_light(s0, angle));
  }
  /// Over a full turn.
  void add_turn(int count) {
    for (int i = 0; i < count; ++i) add_polarized(i * 360.0 / count);
  }

  FitSettings settings() const { return {.mosaic = sensor.settings().mosaic}; }

  Calibration fit(const FitSettings& settings, const std::set<std::size_t>& left_out = {}) const {
    CalibrationFit fit(settings);
    std::vector<std::size_t> given;
    for (std::size_t i = 0; i < frames.size(); ++i) {
      if (left_out.contains(i)) continue;
      fit.add(frames[i], kinds[i]);
      given.push_back(i);
    }
    return fit.finish([&](std::size_t index) { return frames[given[index]].view(); });
  }
  Calibration fit() const { return fit(settings()); }
};

}  // namespace kv::test
