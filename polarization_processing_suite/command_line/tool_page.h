// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <span>

#include "command_line/command.h"

namespace kv::polarization {

/// What the manual tells of the tool as a whole; `name` is the program's.
const CommandPage& tool_page();

/// The options that stand in the place of a command.
const std::vector<OptionRecord>& tool_options();

/// A word, and what it means.
struct GlossaryEntry {
  const char* term;
  const char* meaning;
};

/// What all options have in common.
std::span<const GlossaryEntry> common_habits();

std::span<const GlossaryEntry> exit_statuses();

/// What -h prints without a command.
std::string tool_help(const Commands& commands);
}  // namespace kv::polarization
