// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "command_line/batch/frame_report.h"
#include "command_line/json_type.h"

namespace kv::polarization {

/// Sums of a run.
struct RunTotals {
  std::size_t frames = 0;  ///< done by this run
  std::size_t failed = 0;
  std::size_t skipped = 0;  ///< that an earlier run had done
  std::size_t results = 0;
  std::uint64_t bytes = 0;
  double seconds = 0;  ///< of the whole run
  double pixels = 0;   ///< of frames whose planes were computed
  double transform_seconds = 0;
  std::size_t clipped_frames = 0;
  double clipped_pixels = 0;

  std::size_t seen() const { return frames + failed + skipped; }
  void add(const FrameReport& report);
};

Json json_of(const RunTotals& totals);

/// One line for people.
std::string summary_of(const RunTotals& totals, const std::string& destination, bool dry_run);

/// The line that warns of clipped intensity; empty where nothing is clipped.
std::string clipping_of(const RunTotals& totals);

}  // namespace kv::polarization
