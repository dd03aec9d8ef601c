// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "logger/registry.h"

#include <spdlog/sinks/stdout_sinks.h>

namespace kv::logger {

Log& Registry::get(const std::string& module_name, const std::string& group_name,
                   const std::string& config_file_name) {
  const auto names = std::pair(module_name, group_name);
  auto found = logs_.find(names);
  if (found == logs_.end()) {
    const std::string name = group_name.empty() ? module_name : module_name + "/" + group_name;
    found = logs_.emplace(names, CountedLog{make_log(name, config_file_name)}).first;
  }
  ++found->second.uses;
  return *found->second.log;
}

void Registry::free(const std::string& module_name, const std::string& group_name) {
  const auto found = logs_.find({module_name, group_name});
  if (found != logs_.end() && --found->second.uses == 0) logs_.erase(found);
}

std::unique_ptr<Log> Registry::make_log(const std::string& name,
                                        const std::string& config_file_name) {
  try {
    const std::filesystem::path path = find_config(config_file_name);
    const Config config = path.empty() ? Config{} : read_config(path);
    return std::make_unique<Log>(name, level_for(config), make_sinks(config));
  } catch (const ConfigFault& fault) {
    report_once(std::string(fault.what()) +
                ". The defaults hold: errors go to standard error, other lines are dropped.");
    const Config defaults;
    return std::make_unique<Log>(name, level_for(defaults), make_sinks(defaults));
  }
}

std::int32_t Registry::level_for(const Config& config) {
  try {
    return level_in_environment().value_or(config.level);
  } catch (const ConfigFault& fault) {
    report_once(std::string(fault.what()) + ". The level is " + std::to_string(config.level) + ".");
    return config.level;
  }
}

std::vector<Sink> Registry::make_sinks(const Config& config) {
  std::vector<Sink> sinks;
  if (config.console) {
    sinks.push_back(std::make_shared<spdlog::sinks::stderr_sink_mt>());
    sinks.back()->set_pattern(config.pattern);
  }
  if (!config.file.empty()) sinks.push_back(file_sink(config));
  return sinks;
}

/// Logs that name the same file share it, as the first of them has set it up.
Sink Registry::file_sink(const Config& config) {
  std::weak_ptr<FileSink>& known = files_[config.file];
  if (const auto shared = known.lock()) return shared;
  try {
    const auto sink = std::make_shared<FileSink>(config.file.string(), config.file_max_kib * 1024,
                                                 config.file_count);
    sink->set_pattern(config.pattern);
    known = sink;
    return sink;
  } catch (const spdlog::spdlog_ex& failure) {
    throw ConfigFault("file: " + std::string(failure.what()) +
                      "; name a file that this process may write");
  }
}

void Registry::report_once(const std::string& line) {
  if (reported_.insert(line).second) report(line);
}

}  // namespace kv::logger
