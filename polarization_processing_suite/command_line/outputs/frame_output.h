// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "command_line/batch/journal.h"
#include "kv/image_files/pending_file.h"

namespace kv::polarization {

/// How results take their names.
enum class Publishing : std::uint8_t { as_new, as_replacement };

/// The files of one frame. None appears before all of them are written.
class FrameOutput {
 public:
  using Work = std::function<void(PendingFile&)>;

  /// Adds a file. Its work may run on any thread, at the same time as that of other files.
  void add(const std::filesystem::path& path, Work work);

  /// Adds a file of text.
  void add_text(const std::filesystem::path& path, std::string text);

  /// Writes all files on that many threads, each of which has one of them open; hands them to the
  /// disk, and then gives them their names. Throws a failure of any of them.
  void write(std::size_t threads, Publishing publishing);

  /// What was written, by names relative to a folder.
  std::vector<JournalFile> files(const std::filesystem::path& folder) const;

 private:
  std::vector<std::filesystem::path> paths_;
  std::vector<Work> work_;
};

/// Name and size of a file that is there, by its name relative to a folder.
JournalFile journal_file(const std::filesystem::path& file, const std::filesystem::path& folder);

}  // namespace kv::polarization
