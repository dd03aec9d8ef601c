// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <istream>
#include <optional>
#include <stdexcept>
#include <string>

namespace kv::logger {

/// What to write and where. The initial values are the defaults.
struct Config {
  std::int32_t level = 2;      ///< The highest severity number that is written, 0 to 7.
  bool console = true;         ///< To standard error.
  std::filesystem::path file;  ///< None when empty.
  std::size_t file_max_kib = 10240;
  std::size_t file_count = 3;  ///< Files set aside, beside the one being written.
  std::string pattern = "%Y-%m-%d %H:%M:%S.%e [%l] %n: %v";

  bool operator==(const Config&) const = default;
};

/// Says in one line what is wrong with a configuration, where, and what would be right.
class ConfigFault : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// The level that KEVRINTH_QRM_LOGGER_LEVEL names in the environment, which goes before that of the
/// file: one run can be looked into without a change of files. Throws ConfigFault.
std::optional<std::int32_t> level_in_environment();

/// Reads `key = value` lines; throws ConfigFault at the first that makes no sense. `name` stands
/// for the source in the fault.
Config parse_config(std::istream& lines, const std::string& name);

/// An absolute path as it is; else the file that KEVRINTH_QRM_LOGGER_CONFIG names in the
/// environment, else the one of that name beside this library. Never one of the working folder,
/// which may hold a stranger's files. Empty when there is none.
std::filesystem::path find_config(const std::filesystem::path& file_name);

/// The configuration in that file, whose folder is where a relative log file starts; throws
/// ConfigFault.
Config read_config(const std::filesystem::path& path);

}  // namespace kv::logger
