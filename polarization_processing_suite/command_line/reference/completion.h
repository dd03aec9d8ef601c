// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>

#include "command_line/command.h"

namespace kv::polarization {

// Scripts that make a shell complete command lines of the tool: commands, options, choices, also
// inside comma lists, files and folders. They hold all that they offer, and never run the tool.
std::string bash_completion(const Commands& commands);
std::string zsh_completion(const Commands& commands);
std::string fish_completion(const Commands& commands);

/// What may stand where a record's value does: its choices, or the commands; else nothing.
std::vector<std::string> words_for(const OptionRecord& record, const Commands& commands);

/// The records of a command, that of -h included.
std::vector<OptionRecord> all_records(const Command& command);

}  // namespace kv::polarization
