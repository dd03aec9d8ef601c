// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <spdlog/sinks/sink.h>

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace kv::logger {

using Sink = std::shared_ptr<spdlog::sinks::sink>;

/// Where a line comes from.
struct Source {
  const char* file;
  std::int32_t line;
  const char* function;
};

/// The lines of one module. It writes to its sinks itself: a logger of spdlog's own would keep a
/// failed write from the caller.
class Log {
 public:
  /// Writes lines up to the severity number `level`.
  Log(std::string name, std::int32_t level, std::vector<Sink> sinks);

  /// Whether all sinks have taken the line, or nobody wants it. The first failure is reported on
  /// standard error. Any thread may call it.
  bool write(std::int32_t severity, const Source& source, const char* message);

 private:
  void report_once(const char* reason);

  const std::string name_;
  const std::int32_t level_;
  const std::vector<Sink> sinks_;
  std::atomic_flag reported_;
};

/// One line on standard error, about the logger itself.
void report(const std::string& line);

}  // namespace kv::logger
