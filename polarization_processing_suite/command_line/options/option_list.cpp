#include "command_line/options/option_list.h"

#include <utility>

#include "command_line/options/values.h"

namespace kv::polarization {
namespace {

/// As --help tells it.
std::string help_of(const OptionRecord& record) {
  std::string help = record.summary;
  if (!record.choices.empty()) {
    help += ": ";
    for (std::size_t i = 0; i < record.choices.size(); ++i) {
      help += (i == 0 ? "" : ", ") + record.choices[i];
    }
  }
  if (!record.initial.empty()) help += " (default: " + record.initial + ")";
  return help;
}

void take(const std::string& key, const Setter& set, const std::string& text) {
  try {
    set(text);
  } catch (const BadValue& bad) {
    throw CLI::ValidationError("--" + key, bad.what());
  }
}

}  // namespace

std::string key_of(const OptionRecord& record) {
  const std::size_t dashes = record.names.find("--");
  return dashes == std::string::npos ? record.names : record.names.substr(dashes + 2);
}

// Callbacks run as the parser meets their options, so that the last one wins among an option and
// what undoes it.
void OptionList::add(OptionRecord record, Setter set, std::function<void()> unset) {
  const std::string key = key_of(record);
  command_
      .add_option_function<std::string>(
          record.names, [key, set](const std::string& text) { take(key, set, text); },
          help_of(record))
      ->type_name(record.value)
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
  command_.add_flag_function(record.names, set_to(true), help_of(record))->trigger_on_parse();
  command_.add_flag_function("--no-" + key, set_to(false))->group("")->trigger_on_parse();
  record.can_be_undone = true;
  records_.push_back(std::move(record));
}

void OptionList::add_arguments(OptionRecord record, std::vector<std::string>& arguments, int least,
                               int most) {
  command_.add_option(record.names, arguments, help_of(record))
      ->type_name(record.value)
      ->expected(least, most)
      ->required(record.required);
  records_.push_back(std::move(record));
}

bool OptionList::given(const std::string& key) const { return command_.count("--" + key) > 0; }

}  // namespace kv::polarization
