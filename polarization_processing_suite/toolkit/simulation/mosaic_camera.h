// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <functional>

#include "kv/polarization/frame.h"
#include "kv/polarization/mosaic.h"
#include "toolkit/simulation/scene.h"

namespace kv::polarization {

/// By default typical of the sensors with 3.45 micrometre pixels that carry such mosaics.
struct CameraSettings {
  PolarPhase phase = kv_polar_phase_0;  ///< polarizer behind the first pixel
  int bit_depth = 16;
  bool noise = true;
  std::uint64_t seed = 1;    ///< the same seed makes the same frame
  double full_well = 10500;  ///< electrons of the greatest sample, above black
  double read_noise = 2.5;   ///< electrons
  double black_level = 0;    ///< counts
};

/// Light at a point of the picture, in units of the camera's full scale.
using LightField = std::function<Stokes(double column, double row)>;

/// The raw mosaic frame that a polarization camera takes, with shot noise, read noise and rounding.
Frame photograph(const LightField& light, int width, int height, const CameraSettings& settings);
Frame photograph(const Scene& scene, int width, int height, const CameraSettings& settings);

}  // namespace kv::polarization
