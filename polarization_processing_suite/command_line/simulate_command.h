#pragma once

#include <filesystem>

#include "toolkit/simulation/mosaic_camera.h"

namespace kv::polarization {

struct SimulateOptions {
  std::filesystem::path file;
  int width = 1224;
  int height = 1024;
  int phase_degrees = 0;
  CameraSettings camera;
};

/// Writes a frame of the synthetic scene. Returns an exit status.
int run_simulate(const SimulateOptions& options);

}  // namespace kv::polarization
