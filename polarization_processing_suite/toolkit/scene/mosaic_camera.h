#pragma once

#include <array>
#include <cstdint>

#include "kevrinth_qrm_polarization_processor.h"
#include "toolkit/frame.h"
#include "toolkit/scene/scene.h"

namespace kv {

struct CameraSettings {
  PolarPhase phase = kv_polar_phase_0;  ///< polarizer behind the first pixel
  int bit_depth = 16;
  bool noise = true;
  std::uint64_t seed = 1;  ///< the same seed makes the same frame
};

/// Angles in degrees of a cell's polarizers: top left, top right, bottom left, bottom right.
std::array<int, 4> polarizer_angles(PolarPhase phase);

/// The raw mosaic frame that a polarization camera takes of a scene.
Frame photograph(const Scene& scene, int width, int height, const CameraSettings& settings);

}  // namespace kv
