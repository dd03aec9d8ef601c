// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "command_line/inputs/pattern_search.h"

#include <system_error>
#include <vector>

#include "command_line/inputs/folder_entries.h"
#include "command_line/inputs/name_pattern.h"
#include "command_line/path_text.h"

namespace kv::polarization {
namespace fs = std::filesystem;
namespace {

constexpr const char* kAnyFolders = "**";

class Search {
 public:
  Search(const FileVisitor& visit_file, const FileVisitor& visit_folder)
      : visit_file_(visit_file), visit_folder_(visit_folder) {}

  void run(const fs::path& pattern) {
    fs::path start;
    for (const fs::path& name : pattern) {
      const std::string text = text_of(name);
      if (names_.empty() && !NamePattern::has_wildcards(text)) {
        start /= name;
      } else if (names_.empty() || text != kAnyFolders || names_.back() != kAnyFolders) {
        names_.push_back(text);
      }
    }
    // A pattern of ** alone means files, as **/* does.
    if (names_.back() == kAnyFolders) names_.emplace_back("*");
    if (start.empty() || fs::is_directory(start, ignored_)) search(start, {}, 0);
  }

 private:
  void search(const fs::path& folder, const fs::path& relative, std::size_t step) {
    const std::string& name = names_[step];
    if (name == kAnyFolders) {
      search(folder, relative, step + 1);
      for (const auto& [inner, is_link] : read_folder(folder).folders) {
        if (is_hidden(inner) || is_link) continue;
        search(folder / path_of(inner), relative / path_of(inner), step);
      }
    } else if (NamePattern::has_wildcards(name)) {
      search_matches(folder, relative, step);
    } else {
      take(folder / path_of(name), name, relative, step);
    }
  }

  void search_matches(const fs::path& folder, const fs::path& relative, std::size_t step) {
    const NamePattern pattern(names_[step]);
    const auto matches = [&](const std::string& name) {
      return is_hidden(name) == is_hidden(names_[step]) && pattern.matches(name);
    };
    const FolderEntries entries = read_folder(folder);
    if (is_last(step)) {
      for (const std::string& name : entries.files) {
        if (matches(name)) visit_file_(folder / path_of(name), relative);
      }
    }
    for (const auto& [name, is_link] : entries.folders) {
      if (matches(name)) enter(folder / path_of(name), relative / path_of(name), step);
    }
  }

  /// Takes a name that has no wildcards.
  void take(const fs::path& path, const std::string& name, const fs::path& relative,
            std::size_t step) {
    if (fs::is_directory(path, ignored_)) {
      enter(path, relative / path_of(name), step);
    } else if (is_last(step) && fs::is_regular_file(path, ignored_)) {
      visit_file_(path, relative);
    }
  }

  void enter(const fs::path& folder, const fs::path& relative, std::size_t step) {
    if (is_last(step)) {
      visit_folder_(folder, relative);
    } else {
      search(folder, relative, step + 1);
    }
  }

  bool is_last(std::size_t step) const { return step + 1 == names_.size(); }

  const FileVisitor& visit_file_;
  const FileVisitor& visit_folder_;
  std::vector<std::string> names_;  // from the first one with a wildcard on
  std::error_code ignored_;
};

}  // namespace

void search_pattern(const std::string& pattern, const FileVisitor& visit_file,
                    const FileVisitor& visit_folder) {
  Search(visit_file, visit_folder).run(path_of(pattern));
}

}  // namespace kv::polarization
