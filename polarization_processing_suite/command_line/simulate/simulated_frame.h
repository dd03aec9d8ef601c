// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <optional>
#include <vector>

#include "command_line/simulate/simulate_command.h"
#include "toolkit/simulation/simulated_sensor.h"

namespace kv::polarization {

/// The sensor that the options ask for.
SimulatedSensor sensor_of(const SimulateOptions& options);

/// Makes the folder if it is missing. Throws Fault of kind file when it cannot be made.
void make_folder(const std::filesystem::path& folder);

/// Takes frames of the scene. Its light, which is traced once on all cores, takes 24 bytes a pixel;
/// after Ctrl-C it is not whole.
///
/// Threads: any number may take frames at the same time.
class FrameSimulator {
 public:
  /// Throws Fault of kind argument for a frame of a size that transform refuses.
  explicit FrameSimulator(const SimulateOptions& options);

  /// Frames of different numbers, from 0 up, have different noise.
  Frame take(std::uint64_t number) const;

 private:
  const SimulateOptions& options_;
  std::vector<Stokes> light_;  // of each pixel, row by row
  std::optional<SimulatedSensor> sensor_;
};

}  // namespace kv::polarization
