// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <filesystem>
#include <functional>
#include <set>

namespace kv::polarization {

/// Takes a file's path, and its folder relative to where the search began.
using FileVisitor =
    std::function<void(const std::filesystem::path& file, const std::filesystem::path& folder)>;

/// Goes through a folder and, if wanted, those in it: the files of each in their natural order,
/// then its folders. A link to a folder is followed unless the walk comes, or came, by there
/// anyway, so that it ends.
class FolderWalk {
 public:
  FolderWalk(const std::filesystem::path& root, bool recursive, FileVisitor visit);

  /// Whether the root has folders that were not entered, as it was not recursive.
  bool left_folders_out() const { return left_folders_out_; }

 private:
  void walk(const std::filesystem::path& folder, const std::filesystem::path& relative);
  bool enters(const std::filesystem::path& folder, bool is_link);

  std::filesystem::path root_;  // without links
  bool recursive_;
  FileVisitor visit_;
  std::set<std::filesystem::path> entered_;  // without links
  bool left_folders_out_ = false;
};

}  // namespace kv::polarization
