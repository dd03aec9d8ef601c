// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdio>
#include <memory>
#include <optional>

#include "command_line/json_type.h"

namespace kv::polarization {

/// JSON lines for a program that watches the run.
class EventStream {
 public:
  /// To an open descriptor, such as 3 of a shell's 3>events; none for no events. Throws UsageError
  /// when it is not open for writing.
  explicit EventStream(std::optional<int> descriptor);
  ~EventStream();
  EventStream(const EventStream&) = delete;
  EventStream& operator=(const EventStream&) = delete;

  explicit operator bool() const { return stream_ != nullptr; }

  /// One line at once. A reader that has gone away is no reason to end the run: nothing is told to
  /// it further.
  void write(const Json& event);

 private:
  std::FILE* stream_ = nullptr;
};

}  // namespace kv::polarization
