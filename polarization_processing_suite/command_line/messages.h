// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <filesystem>
#include <string>

namespace kv::polarization {

/// Text that a terminal can be shown whatever it holds: control characters, and bytes that are no
/// UTF-8, become \xNN.
std::string printable(const std::string& text);
std::string printable(const std::filesystem::path& path);

/// One line on the error stream, with the program's name before it. Any thread may write one.
void complain(const std::string& line);

}  // namespace kv::polarization
