// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <optional>
#include <string>
#include <vector>

#include "command_line/command.h"

namespace kv::polarization {

/// What --NAME=? asks for, somewhere on the command line: the values of that option, a line each.
std::optional<std::string> asked_values(const Commands& commands,
                                        const std::vector<std::string>& arguments);

/// Throws UsageError when the first word of the command line is no command, and names the one that
/// was likely meant.
void check_command_name(const Commands& commands, const std::vector<std::string>& arguments);

}  // namespace kv::polarization
