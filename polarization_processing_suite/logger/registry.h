// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <spdlog/sinks/rotating_file_sink.h>

#include <filesystem>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "logger/config.h"
#include "logger/log.h"

namespace kv::logger {

/// The logs of the process. Calls must not overlap.
class Registry {
 public:
  Log& get(const std::string& module_name, const std::string& group_name,
           const std::string& config_file_name);

  /// Ignores names that no log has.
  void free(const std::string& module_name, const std::string& group_name);

  bool empty() const { return logs_.empty(); }

 private:
  struct CountedLog {
    std::unique_ptr<Log> log;
    unsigned uses = 0;
  };
  using FileSink = spdlog::sinks::rotating_file_sink_mt;

  std::unique_ptr<Log> make_log(const std::string& name, const std::string& config_file_name);
  std::int32_t level_for(const Config& config);
  std::vector<Sink> make_sinks(const Config& config);
  Sink file_sink(const Config& config);
  void report_once(const std::string& line);

  std::map<std::pair<std::string, std::string>, CountedLog> logs_;
  /// By path: two sinks on one file would rotate it under each other's feet.
  std::map<std::filesystem::path, std::weak_ptr<FileSink>> files_;
  std::set<std::string> reported_;
};

}  // namespace kv::logger
