// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "platform/performance_counter.h"

#include <windows.h>

namespace kv::platform {

bool read_counter_frequency(std::int64_t& frequency) {
  LARGE_INTEGER value;
  if (QueryPerformanceFrequency(&value) == 0) return false;
  frequency = value.QuadPart;
  return true;
}

bool read_counter(std::int64_t& count) {
  LARGE_INTEGER value;
  if (QueryPerformanceCounter(&value) == 0) return false;
  count = value.QuadPart;
  return true;
}

}  // namespace kv::platform
