// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "logger/config.h"

#include <array>
#include <charconv>
#include <cstdlib>
#include <fstream>
#include <string_view>
#include <system_error>

#include "platform/own_folder.h"

namespace kv::logger {
namespace {

std::string quoted(std::string_view text) { return "'" + std::string(text) + "'"; }

template <class Number>
Number number_in(std::string_view value, Number lowest, Number highest) {
  Number number{};
  const char* const end = value.data() + value.size();
  const auto [rest, error] = std::from_chars(value.data(), end, number);
  if (error != std::errc{} || rest != end || number < lowest || number > highest) {
    throw ConfigFault(quoted(value) + " is not a whole number from " + std::to_string(lowest) +
                      " to " + std::to_string(highest));
  }
  return number;
}

std::int32_t level_in(std::string_view value) { return number_in(value, 0, 7); }

bool on_or_off(std::string_view value) {
  if (value == "on") return true;
  if (value == "off") return false;
  throw ConfigFault(quoted(value) + " is neither 'on' nor 'off'");
}

struct Key {
  std::string_view name;
  void (*set)(Config& config, std::string_view value);
};

constexpr std::size_t kMaxKib = std::size_t{1024} * 1024;
constexpr std::size_t kMaxFiles = 1000;

constexpr std::array kKeys{
    Key{"level", [](Config& c, std::string_view v) { c.level = level_in(v); }},
    Key{"console", [](Config& c, std::string_view v) { c.console = on_or_off(v); }},
    Key{"file", [](Config& c, std::string_view v) { c.file = std::filesystem::path(v); }},
    Key{"file_max_kib",
        [](Config& c, std::string_view v) {
          c.file_max_kib = number_in(v, std::size_t{1}, kMaxKib);
        }},
    Key{"file_count",
        [](Config& c, std::string_view v) {
          c.file_count = number_in(v, std::size_t{0}, kMaxFiles);
        }},
    Key{"pattern", [](Config& c, std::string_view v) { c.pattern = v; }},
};

const Key& key_named(std::string_view name) {
  std::string known;
  for (const Key& key : kKeys) {
    if (key.name == name) return key;
    known += (known.empty() ? "" : ", ") + std::string(key.name);
  }
  throw ConfigFault("unknown key " + quoted(name) + "; known are " + known);
}

std::string_view trimmed(std::string_view text) {
  constexpr std::string_view blanks = " \t\r";
  const auto first = text.find_first_not_of(blanks);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

void apply_line(Config& config, std::string_view line) {
  line = trimmed(line);
  if (line.empty() || line.front() == '#') return;
  const auto equals = line.find('=');
  if (equals == std::string_view::npos) {
    throw ConfigFault(quoted(line) + " is not of the form 'key = value'");
  }
  const Key& key = key_named(trimmed(line.substr(0, equals)));
  try {
    key.set(config, trimmed(line.substr(equals + 1)));
  } catch (const ConfigFault& fault) {
    throw ConfigFault(std::string(key.name) + ": " + fault.what());
  }
}

/// Empty when it is not set.
std::string_view in_environment(const char* name) {
  // Nothing here changes the environment. NOLINTNEXTLINE(concurrency-mt-unsafe)
  const char* const value = std::getenv(name);
  return value == nullptr ? "" : value;
}

}  // namespace

std::optional<std::int32_t> level_in_environment() {
  const char* const name = "KEVRINTH_QRM_LOGGER_LEVEL";
  const std::string_view value = in_environment(name);
  if (value.empty()) return std::nullopt;
  try {
    return level_in(value);
  } catch (const ConfigFault& fault) {
    throw ConfigFault(std::string(name) + ": " + fault.what());
  }
}

Config parse_config(std::istream& lines, const std::string& name) {
  constexpr std::string_view byte_order_mark = "\xEF\xBB\xBF";
  Config config;
  std::string line;
  for (int number = 1; std::getline(lines, line); ++number) {
    if (number == 1 && line.starts_with(byte_order_mark)) line.erase(0, byte_order_mark.size());
    try {
      apply_line(config, line);
    } catch (const ConfigFault& fault) {
      throw ConfigFault(name + ":" + std::to_string(number) + ": " + fault.what());
    }
  }
  if (lines.bad()) throw ConfigFault(name + ": cannot be read");
  return config;
}

std::filesystem::path find_config(const std::filesystem::path& file_name) {
  std::filesystem::path path = file_name;
  if (path.is_relative()) {
    std::filesystem::path named = in_environment("KEVRINTH_QRM_LOGGER_CONFIG");
    if (!named.empty()) return named;
    const std::filesystem::path beside_library = platform::own_folder();
    // Of a library that was loaded by a relative path, nobody knows the folder any more.
    if (path.empty() || !beside_library.is_absolute()) return {};
    path = beside_library / path;
  }
  std::error_code ignored;
  return std::filesystem::exists(path, ignored) ? path : std::filesystem::path{};
}

Config read_config(const std::filesystem::path& path) {
  std::ifstream lines(path);
  if (!lines) throw ConfigFault(path.string() + ": cannot be opened for reading");
  Config config = parse_config(lines, path.string());
  if (!config.file.empty()) {
    config.file = (std::filesystem::absolute(path).parent_path() / config.file).lexically_normal();
  }
  return config;
}

}  // namespace kv::logger
