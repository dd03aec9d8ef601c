#pragma once

#include <cstdint>

#include "kv/polarization/frame.h"
#include "kv/polarization/mosaic.h"
#include "toolkit/simulation/scene.h"

namespace kv::polarization {

struct CameraSettings {
  PolarPhase phase = kv_polar_phase_0;  ///< polarizer behind the first pixel
  int bit_depth = 16;
  bool noise = true;
  std::uint64_t seed = 1;  ///< the same seed makes the same frame
};

/// The raw mosaic frame that a polarization camera takes of a scene.
Frame photograph(const Scene& scene, int width, int height, const CameraSettings& settings);

}  // namespace kv::polarization
