// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "command_line/options/help_text.h"

#include <algorithm>

#include "command_line/options/text_layout.h"
#include "command_line/options/values.h"

namespace kv::polarization {
namespace {

/// Column at which summaries begin: most terms end before it.
constexpr std::size_t kSummaryColumn = 28;

/// Long names stand below each other, whether or not a short one is before them.
std::string help_term(const OptionRecord& record) {
  if (is_argument(record)) return usage_of(record);
  const std::string names = comma_list(names_of(record));
  const std::string value = record.value.empty() ? "" : " " + record.value;
  return (names.starts_with("--") ? "    " : "") + names + value;
}

}  // namespace

const OptionRecord& help_record() {
  static const OptionRecord record{.names = "-h,--help", .summary = "Show this help"};
  return record;
}

std::vector<OptionRecord> in_reading_order(const std::vector<OptionRecord>& records) {
  std::vector<OptionRecord> sorted = records;
  std::ranges::stable_sort(sorted, {}, [](const OptionRecord& record) {
    return is_argument(record) ? 0 : record.required ? 1 : 2;
  });
  return sorted;
}

std::string told_of(const OptionRecord& record, const std::string& mark) {
  std::string text = record.summary;
  for (const std::string& choice : record.choices) {
    text += (&choice == record.choices.data() ? ": " : ", ") + mark + choice + mark;
  }
  if (record.required && !is_argument(record)) text += " (required)";
  if (!record.initial.empty()) text += " (default: " + record.initial + ")";
  return text;
}

std::string usage_of(const OptionRecord& argument) {
  std::string usage;
  if (argument.least == argument.most) {
    for (int i = 0; i < argument.least; ++i) usage += (i == 0 ? "" : " ") + argument.names;
    return usage;
  }
  usage = argument.names + (argument.most > 1 ? "..." : "");
  return argument.least == 0 ? "[" + usage + "]" : usage;
}

std::string usage_of(const CommandPage& page, const std::vector<OptionRecord>& records) {
  std::string usage = std::string(kProgram) + " " + page.name;
  bool has_more = false;
  for (const OptionRecord& record : in_reading_order(records)) {
    if (is_argument(record)) {
      usage += " " + usage_of(record);
    } else if (record.required) {
      usage += " " + names_of(record).front() + " " + record.value;
    } else {
      has_more = true;
    }
  }
  return usage + (has_more ? " [OPTIONS]" : "");
}

std::string help_list(const std::string& heading, const std::vector<OptionRecord>& records,
                      std::size_t width) {
  std::string text;
  for (const OptionRecord& record : records) {
    text += beside(help_term(record), told_of(record), kSummaryColumn, width);
  }
  return text.empty() ? "" : "\n" + heading + ":\n" + text;
}

std::string help_text(const CommandPage& page, const std::vector<OptionRecord>& records,
                      std::size_t width) {
  std::vector<OptionRecord> arguments = in_reading_order(records);
  const auto first_option = std::ranges::find_if_not(arguments, is_argument);
  std::vector<OptionRecord> options(first_option, arguments.end());
  arguments.erase(first_option, arguments.end());
  options.push_back(help_record());

  std::string text = wrapped(page.summary + ".", 0, width);
  text += "\nUsage:\n" + wrapped(usage_of(page, records), 2, width);
  text += help_list("Arguments", arguments, width) + help_list("Options", options, width);
  if (!page.examples.empty()) text += "\nExamples:\n";
  for (const std::string& example : page.examples) text += "  " + example + "\n";
  return text + "\n" + kProgram + " manual " + page.name + " tells more.\n";
}

}  // namespace kv::polarization
