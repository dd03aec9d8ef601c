// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <filesystem>
#include <optional>

#include "kv/image_files/image_format.h"
#include "toolkit/simulation/mosaic_camera.h"

namespace kv::polarization {

/// A format that records the bit depth, so that nobody has to tell it.
inline ImageFormat depth_recording_format() {
  return traits_of(ImageFormat::tiff).available() ? ImageFormat::tiff : ImageFormat::pgm;
}

struct SimulateOptions {
  std::filesystem::path file;  ///< the folder of a calibration stack, or of several frames
  int width = 1224;
  int height = 1024;
  int phase_degrees = 0;
  CameraSettings camera{};
  /// How far the sensor's pixels differ, 1 being as those of real ones do; none for an ideal
  /// sensor.
  std::optional<double> scatter{};
  double bad_share = 0;  ///< of the pixels
  bool calibration_stack = false;
  std::optional<std::size_t> frames{};            ///< none for a single one
  ImageFormat format = depth_recording_format();  ///< of several frames
  bool in_one_file = false;                       ///< several frames, in that of `file`
};

/// Writes a frame of the synthetic scene, several ones, or a stack to calibrate the sensor with.
/// Returns an exit status.
int run_simulate(const SimulateOptions& options);

}  // namespace kv::polarization
