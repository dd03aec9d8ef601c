// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "command_line/reference/completion.h"
#include "command_line/tool_page.h"

namespace kv::polarization {
namespace {

constexpr const char* kFishHead =
    R"(# Completion of kv-polarize in fish; printed by: kv-polarize completion fish

function __kv_polarize_is
    set -l words (commandline -opc)
    test "$words[2]" = "$argv[1]"
end

# Words behind those that a comma list has.
function __kv_polarize_list
    set -l before (string match -r -- '^(?:-.*=)?(.*,)' (commandline -ct))[2]
    for word in $argv
        string match -q -- "*,$word,*" ",$before"; or echo $before$word
    end
end

complete -c kv-polarize -f
)";

std::string fish_quoted(const std::string& text) {
  std::string result;
  for (const char letter : text) {
    if (letter == '\'' || letter == '\\') result += '\\';
    result += letter;
  }
  return "'" + result + "'";
}

/// The part of a `complete` line that tells what the value can be.
std::string fish_offer(const OptionRecord& record, const Commands& commands) {
  if (record.completion == Completion::file) return " -F";
  if (record.completion == Completion::folder) return " -a '(__fish_complete_directories)'";
  std::string words;
  for (const std::string& word : words_for(record, commands)) words += " " + word;
  if (words.empty()) return "";
  if (takes_list(record)) return " -a '(__kv_polarize_list" + words + ")'";
  return " -a " + fish_quoted(words.substr(1));
}

std::string names_part(const OptionRecord& record) {
  std::string part;
  for (const std::string& name : names_of(record)) {
    part += name.starts_with("--") ? " -l " + name.substr(2) : " -s " + name.substr(1);
  }
  return part;
}

std::string record_lines(const OptionRecord& record, const Commands& commands,
                         const std::string& condition) {
  const std::string start = "complete -c kv-polarize -n " + fish_quoted(condition);
  const std::string summary = " -d " + fish_quoted(record.summary);
  if (is_argument(record)) {
    const std::string offer = fish_offer(record, commands);
    return offer.empty() ? "" : start + offer + "\n";
  }
  std::string lines = start + names_part(record) + summary;
  if (!record.value.empty()) {
    const bool is_file = record.completion == Completion::file;
    lines += (is_file ? " -r" : " -x") + fish_offer(record, commands);
  }
  lines += "\n";
  if (record.can_be_undone) {
    lines += start + " -l no-" + key_of(record) + " -d " + fish_quoted("Undo --" + key_of(record)) +
             "\n";
  }
  return lines;
}

}  // namespace

std::string fish_completion(const Commands& commands) {
  std::string script = kFishHead;
  for (const OptionRecord& record : tool_options()) {
    script += record_lines(record, commands, "__kv_polarize_is ''");
  }
  for (const auto& command : commands) {
    const CommandPage& page = command->page();
    script += "\ncomplete -c kv-polarize -n \"__kv_polarize_is ''\" -a " + page.name + " -d " +
              fish_quoted(page.summary) + "\n";
    for (const OptionRecord& record : all_records(*command)) {
      script += record_lines(record, commands, "__kv_polarize_is " + page.name);
    }
  }
  return script;
}

}  // namespace kv::polarization
