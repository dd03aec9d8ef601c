// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "command_line/reference/completion.h"
#include "command_line/tool_page.h"

namespace kv::polarization {
namespace {

constexpr const char* kZshHead = R"(#compdef kv-polarize
# Completion of kv-polarize in zsh; printed by: kv-polarize completion zsh

_kv_polarize() {
  local curcontext=$curcontext state line ret=1
)";

// The file is the body of a function when zsh finds it in its path, and is sourced otherwise.
constexpr const char* kZshTail = R"(
if [[ $funcstack[1] == _kv-polarize ]]; then
  _kv_polarize "$@"
else
  compdef _kv_polarize kv-polarize
fi
)";

/// In single quotes.
std::string zsh_quoted(const std::string& text) {
  std::string result;
  for (const char letter : text) result += letter == '\'' ? "'\\''" : std::string(1, letter);
  return "'" + result + "'";
}

/// As text of a rule for _arguments, in which these letters mean something.
std::string zsh_escaped(const std::string& text) {
  std::string result;
  for (const char letter : text) {
    if (std::string_view("\\:[]").find(letter) != std::string_view::npos) result += '\\';
    result += letter;
  }
  return result;
}

/// What follows the colon of a rule: a message, and what makes the words.
std::string action_of(const OptionRecord& record, const Commands& commands) {
  const std::string message = record.value.empty() ? record.names : record.value;
  if (record.completion == Completion::file) return message + ":_files";
  if (record.completion == Completion::folder) return message + ":_files -/";
  std::string words;
  for (const std::string& word : words_for(record, commands)) words += " " + word;
  if (words.empty()) return message + ": ";
  if (takes_list(record)) return message + ":_values -s , " + message + words;
  return message + ":(" + words.substr(1) + ")";
}

std::string line(const std::string& rule) { return " \\\n        " + zsh_quoted(rule); }

/// A rule for each name: long ones take their value in the next word or behind =.
std::string option_lines(const OptionRecord& record, const Commands& commands) {
  const bool has_value = !record.value.empty();
  const std::string action = has_value ? ":" + action_of(record, commands) : "";
  std::string lines;
  for (const std::string& name : names_of(record)) {
    const std::string form = !has_value ? name : name.starts_with("--") ? name + "=" : name + "+";
    lines += line("*" + form + "[" + zsh_escaped(record.summary) + "]" + action);
  }
  if (record.can_be_undone) {
    lines += line("*" + undoing_name_of(record) + "[Undo --" + key_of(record) + "]");
  }
  return lines;
}

std::string argument_lines(const OptionRecord& record, const Commands& commands, int& position) {
  const std::string action = action_of(record, commands);
  if (record.most > record.least && record.most > 1) return line("*:" + action);
  std::string lines;
  for (int i = 0; i < record.most; ++i) {
    const std::string optional = record.least == 0 ? "::" : ":";
    lines += line(std::to_string(++position) + optional + action);
  }
  return lines;
}

std::string command_branch(const Command& command, const Commands& commands) {
  std::string branch = "    " + command.page().name + ")\n      _arguments -s -S";
  int position = 0;
  for (const OptionRecord& record : all_records(command)) {
    branch += is_argument(record) ? argument_lines(record, commands, position)
                                  : option_lines(record, commands);
  }
  return branch + " && ret=0\n      ;;\n";
}

}  // namespace

std::string zsh_completion(const Commands& commands) {
  std::string names;
  std::string branches;
  for (const auto& command : commands) {
    const CommandPage& page = command->page();
    names += "    " + zsh_quoted(page.name + ":" + page.summary) + "\n";
    branches += command_branch(*command, commands);
  }
  std::string options;
  for (const OptionRecord& record : tool_options()) options += option_lines(record, commands);
  return kZshHead + ("  local -a commands=(\n" + names + "  )\n") + "  _arguments -C" + options +
         line("1: :->command") + line("*:: :->argument") + " && ret=0\n" +
         "  case $state in\n"
         "    command) _describe -t commands command commands && ret=0; return ret ;;\n"
         "    argument) curcontext=${curcontext%:*}-$words[1]: ;;\n"
         "    *) return ret ;;\n"
         "  esac\n"
         "  case $words[1] in\n" +
         branches + "  esac\n  return ret\n}\n" + kZshTail;
}

}  // namespace kv::polarization
