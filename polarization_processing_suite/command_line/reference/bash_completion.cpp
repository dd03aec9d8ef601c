// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "command_line/reference/completion.h"
#include "command_line/tool_page.h"

namespace kv::polarization {
namespace {

// Words are split at = too, so that the value in --planes=dolp is a word behind the word =. Names
// of files are left to readline, which knows of quotes and of ~.
constexpr const char* kBashHead =
    R"(# Completion of kv-polarize in bash; printed by: kv-polarize completion bash

_kv_polarize_words() {
  local word
  for word in $1; do
    [[ $word != "$cur"* ]] || COMPREPLY+=("$word")
  done
}

# Words of a comma list, those that it has left out.
_kv_polarize_list() {
  local word before=
  [[ $cur != *,* ]] || before=${cur%,*},
  for word in $1; do
    [[ ,$before == *",$word,"* || $word != "${cur##*,}"* ]] || COMPREPLY+=("$before$word")
  done
  compopt -o nospace
}

_kv_polarize() {
  local cur=${COMP_WORDS[COMP_CWORD]} prev=${COMP_WORDS[COMP_CWORD - 1]}
  COMPREPLY=()
  if [[ $cur == = ]]; then
    cur=
  elif [[ $prev == = ]]; then
    prev=${COMP_WORDS[COMP_CWORD - 2]}
  fi
)";

constexpr const char* kBashTail = R"(}
complete -F _kv_polarize kv-polarize
)";

/// With a space before each word.
std::string spaced(const std::vector<std::string>& words) {
  std::string text;
  for (const std::string& word : words) text += " " + word;
  return text;
}

/// In single quotes; words hold no quote.
std::string quoted_words(const std::string& spaced_words) {
  return "'" + spaced_words.substr(spaced_words.empty() ? 0 : 1) + "'";
}

/// The shell command that offers what a record's value can be; empty for values that only the user
/// knows.
std::string bash_offer(const OptionRecord& record, const Commands& commands) {
  if (record.completion == Completion::file) return "compopt -o default";
  if (record.completion == Completion::folder) return "compopt -o dirnames";
  const auto words = words_for(record, commands);
  if (words.empty()) return "";
  return std::string(takes_list(record) ? "_kv_polarize_list " : "_kv_polarize_words ") +
         quoted_words(spaced(words));
}

std::string branch(const std::string& patterns, const std::string& action) {
  return "    " + patterns + ")" + (action.empty() ? "" : " " + action) + " ;;\n";
}

/// `case` branches for the values of a command's options.
std::string value_branches(const Command& command, const Commands& commands) {
  std::string branches;
  std::string silent;
  for (const OptionRecord& record : all_records(command)) {
    if (is_argument(record) || record.value.empty()) continue;
    const std::string offer = bash_offer(record, commands);
    std::string pattern;
    for (const std::string& name : names_of(record)) {
      pattern += (pattern.empty() ? "" : " | ") + command.page().name + ":" + name;
    }
    if (offer.empty()) {
      silent += (silent.empty() ? "" : " | ") + pattern;
    } else {
      branches += branch(pattern, offer + "; return");
    }
  }
  return branches + (silent.empty() ? "" : branch(silent, "return"));
}

/// `case` branches for the other words of a command; options where there are no arguments.
std::string word_branches(const Command& command, const Commands& commands) {
  std::string names;
  std::string offers;
  for (const OptionRecord& record : all_records(command)) {
    if (is_argument(record)) {
      const std::string offer = bash_offer(record, commands);
      const bool is_new = offers.find(offer) == std::string::npos;
      if (is_new) offers += (offers.empty() ? "" : "; ") + offer;
    } else {
      names += spaced(names_of(record));
      if (record.can_be_undone) names += " " + undoing_name_of(record);
    }
  }
  const std::string name = command.page().name;
  const std::string options = "_kv_polarize_words " + quoted_words(names);
  if (offers.empty()) return branch(name + ":*", options);
  return branch(name + ":-*", options) + branch(name + ":*", offers);
}

}  // namespace

std::string bash_completion(const Commands& commands) {
  std::string first_words;
  std::string values;
  std::string words;
  for (const auto& command : commands) {
    first_words += " " + command->page().name;
    values += value_branches(*command, commands);
    words += word_branches(*command, commands);
  }
  for (const OptionRecord& record : tool_options()) first_words += spaced(names_of(record));
  return kBashHead +
         ("  if ((COMP_CWORD == 1)); then\n    _kv_polarize_words " + quoted_words(first_words) +
          "\n    return\n  fi\n") +
         "  case ${COMP_WORDS[1]}:$prev in\n" + values + "  esac\n" +
         "  case ${COMP_WORDS[1]}:$cur in\n" + words + "  esac\n" + kBashTail;
}

}  // namespace kv::polarization
