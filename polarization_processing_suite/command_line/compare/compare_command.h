// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <filesystem>

#include "command_line/compare/file_comparison.h"

namespace kv::polarization {

struct CompareOptions {
  std::filesystem::path left;
  std::filesystem::path right;
  ComparisonSettings settings{};
  bool json = false;
};

/// Compares two files, or the files of two folders, and tells what differs. Returns an exit status:
/// success when all is equal. Throws Fault or UsageError when there is nothing to compare.
int run_compare(const CompareOptions& options);

}  // namespace kv::polarization
