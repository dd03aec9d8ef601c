// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "command_line/simulate/simulate_command.h"

namespace kv::polarization {

/// Writes frames of the scene, which differ in their noise, into one file, or into a folder, which
/// is made if missing: frame_0001.tiff and so on. Frame n has the noise of the seed n - 1 above the
/// first, so that the first one equals a single frame. Returns how many were written: after Ctrl-C
/// less than were wanted, and none into one file.
std::size_t write_night(const SimulateOptions& options);

}  // namespace kv::polarization
