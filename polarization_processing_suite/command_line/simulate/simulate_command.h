#pragma once

#include <filesystem>
#include <optional>

#include "toolkit/simulation/mosaic_camera.h"

namespace kv::polarization {

struct SimulateOptions {
  std::filesystem::path file;  ///< the folder of a calibration stack
  int width = 1224;
  int height = 1024;
  int phase_degrees = 0;
  CameraSettings camera{};
  /// How far the sensor's pixels differ, 1 being as those of real ones do; none for an ideal
  /// sensor.
  std::optional<double> scatter{};
  double bad_share = 0;  ///< of the pixels
  bool calibration_stack = false;
};

/// Writes a frame of the synthetic scene, or a stack to calibrate the sensor with. Returns an exit
/// status.
int run_simulate(const SimulateOptions& options);

}  // namespace kv::polarization
