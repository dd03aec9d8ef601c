// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <optional>
#include <string>

#include "command_line/progress_text.h"
#include "command_line/stopwatch.h"

namespace kv::polarization {

/// One line on the error stream that shows how far a run is, and vanishes in the end. There is one
/// only on a terminal; it fits its width. For one thread at a time.
class ProgressLine {
 public:
  /// `what` is counted, such as frames.
  explicit ProgressLine(bool wanted, std::string what = "frames");
  ~ProgressLine();
  ProgressLine(const ProgressLine&) = delete;
  ProgressLine& operator=(const ProgressLine&) = delete;

  /// Tells what is done, those that failed included; cheap enough for each frame, as the line is
  /// drawn ten times a second at most.
  void update(std::size_t done, std::size_t failed, std::optional<std::size_t> total);

  /// Removes the line, to make room for a message.
  void hide();

 private:
  bool enabled_;
  std::string what_;
  Stopwatch stopwatch_;
  std::optional<double> drawn_;  // seconds of the stopwatch
  ProgressRate rate_;
  std::size_t visible_ = 0;  // columns of the line that is shown
};

}  // namespace kv::polarization
