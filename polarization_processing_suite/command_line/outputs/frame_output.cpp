// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "command_line/outputs/frame_output.h"

#include <algorithm>
#include <atomic>
#include <optional>
#include <utility>

#include "command_line/batch/side_by_side.h"

namespace kv::polarization {

void FrameOutput::add(const std::filesystem::path& path, Work work) {
  paths_.push_back(path);
  work_.push_back(std::move(work));
}

void FrameOutput::add_text(const std::filesystem::path& path, std::string text) {
  add(path, [text = std::move(text)](PendingFile& file) { file.write(text.data(), text.size()); });
}

void FrameOutput::write(std::size_t threads, Publishing publishing) {
  std::vector<std::optional<PendingFile>> files(paths_.size());
  std::atomic<std::size_t> next = 0;
  run_side_by_side(std::min(threads, files.size()), [&] {
    for (std::size_t i = next++; i < files.size(); i = next++) {
      PendingFile& file = files[i].emplace(paths_[i]);
      work_[i](file);
      file.sync();
      file.close();
    }
  });
  for (std::optional<PendingFile>& file : files) {
    if (publishing == Publishing::as_new) {
      file->publish_new();
    } else {
      file->publish();
    }
  }
}

std::vector<JournalFile> FrameOutput::files(const std::filesystem::path& folder) const {
  std::vector<JournalFile> files;
  for (const std::filesystem::path& path : paths_) files.push_back(journal_file(path, folder));
  return files;
}

JournalFile journal_file(const std::filesystem::path& file, const std::filesystem::path& folder) {
  const std::u8string name = file.lexically_relative(folder).generic_u8string();
  std::error_code unknown;
  const std::uintmax_t size = std::filesystem::file_size(file, unknown);
  return {std::string(name.begin(), name.end()), unknown ? 0 : size};
}

}  // namespace kv::polarization
