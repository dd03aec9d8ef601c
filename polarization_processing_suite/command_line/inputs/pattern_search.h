// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>

#include "command_line/inputs/folder_walk.h"

namespace kv::polarization {

/// Visits all files that a pattern such as night*/**/f_*.png matches, folder by folder and in their
/// natural order; ** follows no links. Their folders are told relative to what the pattern begins
/// with before its first wildcard. The second visitor gets folders that match.
void search_pattern(const std::string& pattern, const FileVisitor& visit_file,
                    const FileVisitor& visit_folder);

}  // namespace kv::polarization
