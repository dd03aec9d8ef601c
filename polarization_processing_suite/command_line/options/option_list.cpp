// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "command_line/options/option_list.h"

#include <CLI/CLI.hpp>
#include <utility>

#include "command_line/options/values.h"

namespace kv::polarization {
namespace {

void take(const std::string& name, const Setter& set, const std::string& text) {
  try {
    set(text);
  } catch (const BadValue& bad) {
    throw CLI::ValidationError(name, bad.what());
  }
}

}  // namespace

// Callbacks run as the parser meets their options, so that the last one wins among an option and
// what undoes it.
void OptionList::add(OptionRecord record, const Setter& set, const std::function<void()>& unset) {
  const std::string key = key_of(record);
  const std::string name = (is_argument(record) ? "" : "--") + key;
  command_
      .add_option_function<std::string>(
          record.names, [name, set](const std::string& text) { take(name, set, text); },
          record.summary)
      ->required(record.required)
      ->trigger_on_parse();
  record.can_be_undone = unset != nullptr;
  if (unset) {
    command_.add_flag_function("--no-" + key, [unset](std::int64_t) { unset(); })
        ->group("")
        ->trigger_on_parse();
  }
  records_.push_back(std::move(record));
}

void OptionList::add_flag(OptionRecord record, bool& flag) {
  const std::string key = key_of(record);
  const auto set_to = [&flag](bool value) {
    return [&flag, value](std::int64_t) { flag = value; };
  };
  command_.add_flag_function(record.names, set_to(true), record.summary)->trigger_on_parse();
  command_.add_flag_function("--no-" + key, set_to(false))->group("")->trigger_on_parse();
  record.can_be_undone = true;
  records_.push_back(std::move(record));
}

void OptionList::add_argument(OptionRecord record, const Setter& set) {
  record.least = record.required ? 1 : 0;
  add(std::move(record), set);
}

void OptionList::add_arguments(OptionRecord record, std::vector<std::string>& arguments, int least,
                               int most) {
  record.least = least;
  record.most = most;
  command_.add_option(record.names, arguments, record.summary)
      ->expected(least, most)
      ->required(record.required);
  records_.push_back(std::move(record));
}

bool OptionList::given(const std::string& key) const { return command_.count("--" + key) > 0; }

}  // namespace kv::polarization
