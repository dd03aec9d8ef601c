// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <deque>
#include <optional>
#include <string>

namespace kv::polarization {

/// How far a run is.
struct Progress {
  std::size_t done = 0;                ///< also those that failed
  std::size_t failed = 0;              ///< of those that are done
  std::optional<std::size_t> total{};  ///< none while nobody can know it, as of a pipe
  std::optional<double> per_second{};  ///< none until it can be told
};

/// "[####....] 1,234 of 20,000 frames, 12.3 frames/s, 3 failed, about 5 min left", or as much of it
/// as these columns hold, the count first. Only ASCII.
std::string progress_text(const Progress& progress, const std::string& what, std::size_t columns);

/// How fast a run is, by its last half minute, as files and storage are not equally fast all night.
class ProgressRate {
 public:
  /// Takes what is done at a time in seconds, which never goes back, and gives what is done in a
  /// second; none in the first second.
  std::optional<double> at(double seconds, std::size_t done);

 private:
  struct Sample {
    double seconds;
    std::size_t done;
  };
  std::deque<Sample> samples_;  // a second apart; the first may be older than the window
};

}  // namespace kv::polarization
