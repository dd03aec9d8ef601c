// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdio>
#include <string>

#include "toolkit/calibration/fit/stack.h"

namespace kv::polarization {

/// As printf would write it.
template <class... Values>
std::string line_of(const char* format, Values... values) {
  char line[240];
  std::snprintf(line, sizeof line, format, values...);
  return line;
}

inline void refuse_frame(StackEntry& entry, const std::string& why) {
  entry.record.used = false;
  entry.record.refusal = why;
}

}  // namespace kv::polarization
