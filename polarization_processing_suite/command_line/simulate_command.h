#pragma once

#include <filesystem>

#include "toolkit/scene/mosaic_camera.h"

namespace kv {

struct SimulateOptions {
  std::filesystem::path file;
  int width = 1224;
  int height = 1024;
  int phase_degrees = 0;
  CameraSettings camera;
};

/// Writes a frame of the synthetic scene. Returns an exit status.
int run_simulate(const SimulateOptions& options);

}  // namespace kv
