// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <map>
#include <utility>
#include <vector>

#include "command_line/batch/frame_report.h"

namespace kv::polarization {

/// Puts reports into the order of the inputs and their frames, however workers come to their ends.
class FrameOrder {
 public:
  /// Those whose turn has come with this one.
  std::vector<FrameReport> add(FrameReport report);

  /// Those that still wait, when a run ends before all frames.
  std::vector<FrameReport> rest();

 private:
  using Place = std::pair<std::size_t, std::size_t>;  ///< input, place

  std::map<Place, FrameReport> waiting_;
  Place next_{0, 0};
};

}  // namespace kv::polarization
