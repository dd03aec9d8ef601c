// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "platform/performance_counter.h"

#include <time.h>

namespace kv::platform {

namespace {
constexpr std::int64_t kNanosecondsPerSecond = 1'000'000'000;
}

bool read_counter_frequency(std::int64_t& frequency) {
  frequency = kNanosecondsPerSecond;
  return true;
}

bool read_counter(std::int64_t& count) {
  timespec now;
  if (clock_gettime(CLOCK_MONOTONIC, &now) != 0) return false;
  count = now.tv_sec * kNanosecondsPerSecond + now.tv_nsec;
  return true;
}

}  // namespace kv::platform
