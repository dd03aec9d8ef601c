// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>
#include <vector>

namespace kv::polarization {

/// The lines of a text file, or of standard input for "-", without empty lines and those that begin
/// with #. Throws Fault when it cannot be read, or is no text in UTF-8 or another extension of
/// ASCII.
std::vector<std::string> read_word_list(const std::string& name);

}  // namespace kv::polarization
