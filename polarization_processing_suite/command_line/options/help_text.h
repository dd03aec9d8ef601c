// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "command_line/options/option_record.h"

namespace kv::polarization {

/// The program's name, as it begins command lines.
inline constexpr const char* kProgram = "kv-polarize";

/// The record of -h, which every command has.
const OptionRecord& help_record();

/// Records in the order that users look for them: arguments, then what is required, then the
/// others.
std::vector<OptionRecord> in_reading_order(const std::vector<OptionRecord>& records);

/// The summary with choices, default, and whether it is required; no full stop at its end. `mark`
/// stands around each choice.
std::string told_of(const OptionRecord& record, const std::string& mark = "");

/// The arguments as a usage line has them, such as "FRAME..." and "[COMMAND]".
std::string usage_of(const OptionRecord& argument);

/// A command line of the command, such as "kv-polarize transform FRAME... -o FOLDER [OPTIONS]".
std::string usage_of(const CommandPage& page, const std::vector<OptionRecord>& records);

/// A heading and one line, or some, for each of these records, in at most `width` columns; nothing
/// without records.
std::string help_list(const std::string& heading, const std::vector<OptionRecord>& records,
                      std::size_t width);

/// What -h prints of a command.
std::string help_text(const CommandPage& page, const std::vector<OptionRecord>& records,
                      std::size_t width);

}  // namespace kv::polarization
