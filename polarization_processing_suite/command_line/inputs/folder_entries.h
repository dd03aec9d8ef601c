// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace kv::polarization {

/// What frames may be in, of a folder.
struct FolderEntries {
  struct Folder {
    std::string name;
    bool is_link;
  };
  std::vector<std::string> files;  ///< also links to nothing, as a lost frame should be told of
  std::vector<Folder> folders;
};

/// The names in a folder, in UTF-8 and sorted naturally; an empty path is the current folder.
/// Pipes, sockets and devices are left out. Throws Fault when the folder cannot be read.
FolderEntries read_folder(const std::filesystem::path& folder);

/// Names that begin with a dot are not meant by folders and wildcards.
inline bool is_hidden(const std::string& name) { return name.starts_with('.'); }

}  // namespace kv::polarization
