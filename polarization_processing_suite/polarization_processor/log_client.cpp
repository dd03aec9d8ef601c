// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "polarization_processor/log_client.h"

#include <cstdarg>
#include <cstddef>
#include <cstdio>

namespace kv {
namespace {

using GetLog = void* (*)(const char* module_name, const char* group_name,
                         const char* config_file_name);
using FreeLog = void (*)(const char* module_name, const char* group_name);

}  // namespace

LogClient::LogClient(const char* module_name)
    : module_name_(module_name), config_file_name_("kevrinth_qrm_logger.cfg") {
  library_ = platform::load_library(
      (std::string("kevrinth_qrm_logger") + platform::kLibrarySuffix).c_str());
  if (library_ == nullptr) return;

  const auto get_log = platform::find_function<GetLog>(library_, "qrm_get_log");
  if (get_log == nullptr) return;
  logger_ = get_log(module_name_.c_str(), group_name_.c_str(), config_file_name_.c_str());
  if (logger_ == nullptr) return;

  log_function_ = platform::find_function<LogFunction>(library_, "qrm_log");
  if (log_function_ == nullptr) return;
  ready_ = true;
}

LogClient::~LogClient() {
  if (library_ == nullptr) return;
  // A library that was loaded gets its free call, even if the binding failed later on.
  try {
    const auto free_log = platform::find_function<FreeLog>(library_, "qrm_free_log");
    if (free_log != nullptr) free_log(module_name_.c_str(), group_name_.c_str());
    platform::unload_library(library_);
  } catch (...) {
    // The library of a logger that throws stays loaded: its code may still be on the stack.
  }
}

bool LogClient::log_message(Severity severity, const char* file, std::int32_t line,
                            const char* function, const char* format, ...) const noexcept try {
  if (!ready_) return false;

  std::va_list arguments;
  va_start(arguments, format);
  const int length = std::vsnprintf(nullptr, 0, format, arguments);
  va_end(arguments);
  if (length < 0) return false;

  std::string message(static_cast<std::size_t>(length), '\0');
  va_start(arguments, format);
  std::vsnprintf(message.data(), message.size() + 1, format, arguments);
  va_end(arguments);

  return log_function_(logger_, static_cast<std::int32_t>(severity), file, line, function,
                       message.c_str()) == 0;
} catch (...) {
  // Logging is an extra: neither a full memory nor a logger that throws changes a call's result.
  return false;
}

}  // namespace kv
