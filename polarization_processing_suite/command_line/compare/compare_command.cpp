// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "command_line/compare/compare_command.h"

#include <tuple>

#include "command_line/compare/compare_report.h"
#include "command_line/compare/folder_comparison.h"
#include "command_line/options/values.h"
#include "command_line/path_text.h"
#include "kv/polarization/fault.h"
#include "platform/process.h"

namespace kv::polarization {
namespace {

bool is_folder(const std::filesystem::path& path) {
  std::error_code failure;
  const auto status = std::filesystem::status(path, failure);
  if (!std::filesystem::exists(status)) {
    throw Fault(FaultKind::file,
                text_of(path) + ": there is no such file or folder; check the path");
  }
  return std::filesystem::is_directory(status);
}

int compare_folders(const CompareOptions& options) {
  const std::vector<FilePair> pairs = pair_files(options.left, options.right);
  if (pairs.empty()) {
    throw Fault(FaultKind::file, "there are no files in " + text_of(options.left) + " and " +
                                     text_of(options.right) + "; check the paths");
  }
  CompareReport report(options);
  for (const FilePair& pair : pairs) {
    if (platform::interrupted()) return report.finish(true);
    if (pair.in_left && pair.in_right) {
      report.add(pair.name, compare_files(options.left / pair.name, options.right / pair.name,
                                          options.settings));
    } else {
      report.add_lone(pair);
    }
  }
  return report.finish(false);
}

}  // namespace

int run_compare(const CompareOptions& options) {
  const bool left_is_folder = is_folder(options.left);
  if (left_is_folder != is_folder(options.right)) {
    const auto& [folder, file] = left_is_folder ? std::tie(options.left, options.right)
                                                : std::tie(options.right, options.left);
    throw UsageError(text_of(folder) + " is a folder, " + text_of(file) +
                     " is a file; name two of a kind");
  }
  if (left_is_folder) return compare_folders(options);
  CompareReport report(options);
  report.add(options.left, compare_files(options.left, options.right, options.settings));
  return report.finish(false);
}

}  // namespace kv::polarization
