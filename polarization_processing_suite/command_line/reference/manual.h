// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "command_line/command.h"
#include "command_line/reference/page_writer.h"

namespace kv::polarization {

/// The page of the tool: its commands, and what all of them have in common.
void write_tool_page(const Commands& commands, PageWriter& writer);

/// The page of a command: all that its records tell.
void write_command_page(const Command& command, PageWriter& writer);

}  // namespace kv::polarization
