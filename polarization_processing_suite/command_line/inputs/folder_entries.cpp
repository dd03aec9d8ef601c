// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "command_line/inputs/folder_entries.h"

#include <algorithm>
#include <system_error>
#include <utility>

#include "command_line/inputs/natural_order.h"
#include "command_line/path_text.h"
#include "kv/polarization/fault.h"

namespace kv::polarization {
namespace fs = std::filesystem;

FolderEntries read_folder(const fs::path& folder) {
  FolderEntries entries;
  std::error_code failure;
  for (fs::directory_iterator place(folder.empty() ? "." : folder, failure), end;
       !failure && place != end; place.increment(failure)) {
    std::error_code ignored;
    std::string name = text_of(place->path().filename());
    if (place->is_directory(ignored)) {
      entries.folders.push_back({std::move(name), place->is_symlink(ignored)});
    } else if (place->is_regular_file(ignored) || !place->exists(ignored)) {
      entries.files.push_back(std::move(name));
    }
  }
  if (failure) {
    throw Fault(FaultKind::file, "cannot read the folder " + text_of(folder) + ": " +
                                     failure.message() +
                                     "; see to it that you may read it, or name the files in it");
  }
  std::ranges::sort(entries.files, naturally_before);
  std::ranges::sort(entries.folders, naturally_before, &FolderEntries::Folder::name);
  return entries;
}

}  // namespace kv::polarization
