// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>
#include <vector>

namespace kv::polarization {

/// Does what a command line says, by its words behind the program's name in UTF-8, and returns the
/// exit status. Lets no exception out: what went wrong is told on the error stream.
int run_tool(std::vector<std::string> arguments);

}  // namespace kv::polarization
