// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "command_line/compare/folder_comparison.h"

#include <map>

#include "command_line/batch/journal.h"
#include "command_line/path_text.h"
#include "kv/polarization/fault.h"

namespace kv::polarization {
namespace {

std::vector<std::filesystem::path> files_below(const std::filesystem::path& folder) {
  std::vector<std::filesystem::path> files;
  try {
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
      if (entry.is_directory() || entry.path().filename() == kJournalName) continue;
      files.push_back(entry.path().lexically_relative(folder));
    }
  } catch (const std::filesystem::filesystem_error& error) {
    throw Fault(FaultKind::file, text_of(error.path1()) + ": the folder cannot be read: " +
                                     error.code().message() + "; check its permissions");
  }
  return files;
}

}  // namespace

std::vector<FilePair> pair_files(const std::filesystem::path& left,
                                 const std::filesystem::path& right) {
  std::map<std::filesystem::path, FilePair> pairs;
  for (const auto& name : files_below(left)) pairs[name] = {name, true, false};
  for (const auto& name : files_below(right)) {
    FilePair& pair = pairs[name];
    pair.name = name;
    pair.in_right = true;
  }
  std::vector<FilePair> sorted;
  sorted.reserve(pairs.size());
  for (auto& [name, pair] : pairs) sorted.push_back(std::move(pair));
  return sorted;
}

}  // namespace kv::polarization
