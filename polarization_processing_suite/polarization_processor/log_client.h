// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <string>

#include "platform/optional_library.h"

namespace kv {

/// Meaning belongs to the logger; these are the two that the library uses.
enum class Severity : std::int32_t { error = 2, timing = 7 };

/// The binding to the optional logger library. An unusable logger is no error: `ready` stays false
/// and every line is dropped.
class LogClient {
 public:
  explicit LogClient(const char* module_name);
  ~LogClient();
  LogClient(const LogClient&) = delete;
  LogClient& operator=(const LogClient&) = delete;

  /// Hands a line in printf syntax to the logger. True when the logger has taken it. Any thread
  /// may call it; putting lines in order is the logger's business.
  bool log_message(Severity severity, const char* file, std::int32_t line, const char* function,
                   const char* format, ...) const noexcept;

 private:
  using LogFunction = std::int32_t (*)(void* logger, std::int32_t severity, const char* file,
                                       std::int32_t line, const char* function,
                                       const char* message);

  platform::LibraryHandle library_ = nullptr;
  void* logger_ = nullptr;
  LogFunction log_function_ = nullptr;
  bool ready_ = false;
  std::string module_name_;
  std::string group_name_;
  std::string config_file_name_;
};

}  // namespace kv
