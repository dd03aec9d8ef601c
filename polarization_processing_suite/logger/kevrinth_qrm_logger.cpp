// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "logger/kevrinth_qrm_logger.h"

#include <memory>
#include <mutex>

#include "logger/registry.h"

namespace {

std::mutex registry_mutex;

/// Lives from the first log to the last, and not in a static object: as the process ends, modules
/// give their logs back after the static objects of this library have been destroyed.
kv::logger::Registry* registry = nullptr;

const char* text(const char* string) { return string == nullptr ? "" : string; }

}  // namespace

void* qrm_get_log(const char* module_name, const char* group_name,
                  const char* config_file_name) try {
  const std::lock_guard lock(registry_mutex);
  if (registry == nullptr) registry = new kv::logger::Registry;
  return &registry->get(text(module_name), text(group_name), text(config_file_name));
} catch (...) {
  return nullptr;
}

int32_t qrm_log(void* log, int32_t severity, const char* file, int32_t line, const char* function,
                const char* message) try {
  if (log == nullptr) return 1;
  const kv::logger::Source source{text(file), line, text(function)};
  return static_cast<kv::logger::Log*>(log)->write(severity, source, text(message)) ? 0 : 1;
} catch (...) {
  return 1;
}

void qrm_free_log(const char* module_name, const char* group_name) try {
  const std::lock_guard lock(registry_mutex);
  if (registry == nullptr) return;
  registry->free(text(module_name), text(group_name));
  if (registry->empty()) {
    delete registry;
    registry = nullptr;
  }
} catch (...) {
  // Without memory for the names the log stays: it is lost, and nothing else is.
}
