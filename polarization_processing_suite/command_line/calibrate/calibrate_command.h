// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "kv/calibration/calibration_fit.h"
#include "kv/image_files/frame_reader.h"

namespace kv::polarization {

struct CalibrateOptions {
  std::filesystem::path manifest;
  std::filesystem::path file;                   ///< to write
  std::optional<std::filesystem::path> report;  ///< none for that beside the file
  FitSettings fit{};
  std::optional<int> bit_depth{};  ///< instead of the files' own
  std::optional<RawShape> raw_shape{};
  std::string camera;
  std::string date;
};

/// Fits a sensor to the frames of a manifest, and writes calibration and report. Returns an exit
/// status.
int run_calibrate(const CalibrateOptions& options);

}  // namespace kv::polarization
