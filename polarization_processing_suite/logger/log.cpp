// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "logger/log.h"

#include <spdlog/details/log_msg.h>

#include <cstdio>
#include <exception>
#include <utility>

namespace kv::logger {
namespace {

/// The word for a severity. 2 is the number that the modules give their errors.
spdlog::level::level_enum word_for(std::int32_t severity) {
  if (severity <= 2) return spdlog::level::err;
  if (severity <= 4) return spdlog::level::warn;
  if (severity <= 6) return spdlog::level::info;
  return spdlog::level::debug;
}

}  // namespace

Log::Log(std::string name, std::int32_t level, std::vector<Sink> sinks)
    : name_(std::move(name)), level_(level), sinks_(std::move(sinks)) {}

bool Log::write(std::int32_t severity, const Source& source, const char* message) {
  if (severity > level_) return true;
  bool written = true;
  for (const Sink& sink : sinks_) {
    try {
      const spdlog::source_loc place{source.file, source.line, source.function};
      sink->log(spdlog::details::log_msg(place, name_, word_for(severity), message));
      // Each line at once: it matters most when the process dies right after it.
      sink->flush();
    } catch (const std::exception& failure) {
      report_once(failure.what());
      written = false;
    }
  }
  return written;
}

void Log::report_once(const char* reason) {
  if (reported_.test_and_set()) return;
  report("lines of " + name_ + " are lost: " + reason);
}

void report(const std::string& line) {
  std::fprintf(stderr, "kevrinth_qrm_logger: %s\n", line.c_str());
}

}  // namespace kv::logger
