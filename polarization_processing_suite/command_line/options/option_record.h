// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>
#include <vector>

namespace kv::polarization {

/// What shells offer behind an option, or as an argument; `command` are the tool's commands.
enum class Completion { none, choices, file, folder, command };

/// All that is told of an option: help, manual, completion and reference are made from it alone.
struct OptionRecord {
  std::string names;    ///< such as "-o,--output"; one in capitals is of arguments without a dash
  std::string value{};  ///< what stands for its value, such as FILE; empty for a flag
  std::string summary;  ///< one line for --help, without a full stop at its end
  std::string
      details{};  ///< what the manual adds, in whole sentences; empty where the summary does
  std::vector<std::string> choices{};  ///< the values that it takes, where they can be listed
  std::string initial{};               ///< the value that it has when it is not given
  bool required = false;
  Completion completion = choices.empty() ? Completion::none : Completion::choices;
  bool can_be_undone = false;  ///< by --no-NAME
  int least = 1, most = 1;     ///< of arguments without a dash: how many there are
};

/// Its long name without dashes, or its only one.
std::string key_of(const OptionRecord& record);

/// Its names, those that undo it left out.
std::vector<std::string> names_of(const OptionRecord& record);

/// The name that undoes it; empty where nothing does.
std::string undoing_name_of(const OptionRecord& record);

/// Whether it is of arguments without a dash.
bool is_argument(const OptionRecord& record);

/// Whether its value is a comma list.
bool takes_list(const OptionRecord& record);

/// What the manual tells of a command beside its options.
struct CommandPage {
  std::string name;
  std::string summary;  ///< one line
  std::string
      details;  ///< paragraphs, with an empty line between them; indented lines stay as they are
  std::vector<std::string> examples{};  ///< whole command lines
};

}  // namespace kv::polarization
