// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "command_line/frames/frame_options.h"
#include "command_line/measure/measurement.h"
#include "command_line/measure/measurement_files.h"

namespace kv::polarization {

struct MeasureOptions {
  std::vector<std::string> words;  ///< for the files of frames, as list_inputs() takes them
  bool recursive = false;
  std::vector<std::string> skip;
  std::vector<NamedRegion> regions;  ///< none for whole frames
  std::optional<std::filesystem::path> region_file;
  FrameSettings settings;
  MeasurementForm form = MeasurementForm::table;
  std::optional<std::filesystem::path> output;  ///< none for the standard output
};

/// Measures all regions of all frames. Returns an exit status.
int run_measure(MeasureOptions options);

}  // namespace kv::polarization
