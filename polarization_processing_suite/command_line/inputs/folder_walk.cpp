// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "command_line/inputs/folder_walk.h"

#include <algorithm>
#include <system_error>
#include <utility>

#include "command_line/inputs/folder_entries.h"
#include "command_line/path_text.h"

namespace kv::polarization {
namespace fs = std::filesystem;
namespace {

fs::path without_links(const fs::path& path) {
  std::error_code failure;
  fs::path found = fs::canonical(path, failure);
  return failure ? path : found;
}

bool is_in(const fs::path& path, const fs::path& folder) {
  return std::ranges::mismatch(path, folder).in2 == folder.end();
}

}  // namespace

FolderWalk::FolderWalk(const fs::path& root, bool recursive, FileVisitor visit)
    : root_(without_links(root)), recursive_(recursive), visit_(std::move(visit)) {
  entered_.insert(root_);
  walk(root, {});
}

void FolderWalk::walk(const fs::path& folder, const fs::path& relative) {
  const FolderEntries entries = read_folder(folder);
  for (const std::string& name : entries.files) {
    if (!is_hidden(name)) visit_(folder / path_of(name), relative);
  }
  for (const auto& [name, is_link] : entries.folders) {
    if (is_hidden(name)) continue;
    if (!recursive_) {
      left_folders_out_ = true;
    } else if (const fs::path inner = folder / path_of(name); enters(inner, is_link)) {
      walk(inner, relative / path_of(name));
    }
  }
}

bool FolderWalk::enters(const fs::path& folder, bool is_link) {
  const fs::path place = without_links(folder);
  if (is_link && (is_in(place, root_) || is_in(root_, place))) return false;
  return entered_.insert(place).second;
}

}  // namespace kv::polarization
