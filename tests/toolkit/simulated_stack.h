#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "kv/calibration/calibration_fit.h"
#include "toolkit/simulation/simulated_sensor.h"

/// A calibration stack of a simulated sensor.
struct SimulatedStack {
  kv::polarization::SimulatedSensor sensor;
  std::vector<kv::polarization::Frame> frames{};
  std::vector<kv::polarization::StackFrame> kinds{};

  void add(kv::polarization::FrameKind kind, double told_angle,
           const kv::polarization::SensorLight& light) {
    kinds.push_back({kind, told_angle, "frame " + std::to_string(frames.size())});
    frames.push_back(sensor.take(light, frames.size()));
  }
  void add_dark(int count = 1) {
    for (; count > 0; --count) add(kv::polarization::FrameKind::dark, 0, {});
  }
  void add_flat(int count = 1, double s0 = 0.8) {
    for (; count > 0; --count) {
      add(kv::polarization::FrameKind::flat, 0, kv::polarization::unpolarized_light(s0));
    }
  }
  /// A frame of light at `angle` as the sensor sees it; it is told as `angle - source_offset`.
  void add_polarized(double angle, double s0 = 0.8, double source_offset = 0) {
    add(kv::polarization::FrameKind::polarized, angle - source_offset,
        kv::polarization::polarized_light(s0, angle));
  }
  void add_turn(int count, double s0 = 0.8, double source_offset = 0) {
    for (int i = 0; i < count; ++i) add_polarized(i * 360.0 / count, s0, source_offset);
  }

  kv::polarization::Calibration fit(kv::polarization::FitSettings settings = {}) const {
    settings.mosaic = sensor.settings().mosaic;
    kv::polarization::CalibrationFit fit(settings);
    for (std::size_t i = 0; i < frames.size(); ++i) fit.add(frames[i], kinds[i]);
    return fit.finish([this](std::size_t index) { return frames[index].view(); });
  }
};
