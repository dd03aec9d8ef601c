// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <filesystem>
#include <vector>

#include "command_line/compare/file_comparison.h"

namespace kv::polarization {

/// A file of one folder or of both, by its path relative to them.
struct FilePair {
  std::filesystem::path name;
  bool in_left;
  bool in_right;
};

/// The files of two folders and of those in them, sorted by name. The journal of a batch is left
/// out: it tells when and where the results were made. Throws Fault when a folder cannot be read.
std::vector<FilePair> pair_files(const std::filesystem::path& left,
                                 const std::filesystem::path& right);

}  // namespace kv::polarization
