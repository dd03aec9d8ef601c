// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "command_line/simulate/simulate_command.h"

namespace kv::polarization {

struct WrittenStack {
  std::size_t frames;
  std::filesystem::path manifest;
};

/// Writes what a careful user would take of a sensor: 36 frames behind a polarizer in steps of 5
/// degrees, 8 darks, 8 flats, the manifest stack.csv that names them, and what the sensor truly is:
/// truth_gain.npy and so on.
WrittenStack write_calibration_stack(const SimulateOptions& options);

}  // namespace kv::polarization
