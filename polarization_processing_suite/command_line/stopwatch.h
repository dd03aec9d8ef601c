// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <algorithm>
#include <chrono>

namespace kv::polarization {

/// Seconds since its making, summed from reading to reading. Steps back, as a faulty virtual
/// machine may have when it is moved, are left out, so that no figure is negative and no wait
/// endless.
class Stopwatch {
 public:
  double seconds() {
    const Clock::time_point now = Clock::now();
    seconds_ += std::max(std::chrono::duration<double>(now - last_).count(), 0.0);
    last_ = now;
    return seconds_;
  }

 private:
  using Clock = std::chrono::steady_clock;
  Clock::time_point last_ = Clock::now();
  double seconds_ = 0;
};

}  // namespace kv::polarization
