// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "command_line/habits.h"

#include <algorithm>
#include <numeric>

#include "command_line/options/values.h"

namespace kv::polarization {
namespace {

const Command* command_named(const Commands& commands, const std::vector<std::string>& arguments) {
  for (const std::string& argument : arguments) {
    for (const auto& command : commands) {
      if (command->page().name == argument) return command.get();
    }
  }
  return nullptr;
}

std::string values_of(const OptionRecord& record) {
  std::string lines;
  for (const std::string& choice : record.choices) lines += choice + "\n";
  if (!lines.empty()) return lines;
  return (record.value.empty() ? "it takes no value" : record.value) + ": " + record.summary + "\n";
}

/// Letters to insert, remove or replace to make one word of the other.
std::size_t distance(const std::string& from, const std::string& to) {
  std::vector<std::size_t> row(to.size() + 1);
  std::iota(row.begin(), row.end(), std::size_t{0});
  for (const char letter : from) {
    std::size_t diagonal = row[0]++;
    for (std::size_t j = 0; j < to.size(); ++j) {
      const std::size_t replaced = diagonal + (letter == to[j] ? 0 : 1);
      diagonal = row[j + 1];
      row[j + 1] = std::min({replaced, row[j] + 1, row[j + 1] + 1});
    }
  }
  return row.back();
}

}  // namespace

std::optional<std::string> asked_values(const Commands& commands,
                                        const std::vector<std::string>& arguments) {
  const Command* command = command_named(commands, arguments);
  if (command == nullptr) return std::nullopt;
  for (const OptionRecord& record : command->options().records()) {
    if (std::ranges::find(arguments, "--" + key_of(record) + "=?") != arguments.end()) {
      return values_of(record);
    }
  }
  return std::nullopt;
}

void check_command_name(const Commands& commands, const std::vector<std::string>& arguments) {
  if (arguments.empty() || arguments[0].starts_with("-")) return;
  const std::string& word = arguments[0];
  std::vector<std::string> names;
  for (const auto& command : commands) names.push_back(command->page().name);
  if (std::ranges::find(names, word) != names.end()) return;
  const auto nearest = std::ranges::min_element(
      names, {}, [&word](const std::string& name) { return distance(word, name); });
  const bool is_near = distance(word, *nearest) <= 2;
  throw UsageError(
      "there is no command '" + word + "'" +
      (is_near ? "; did you mean " + *nearest + "?" : "; the commands are " + comma_list(names)));
}

}  // namespace kv::polarization
