// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>

#include "fuzzing/fuzzing.h"

namespace kv::fuzzing {

/// A folder for a target's files, in memory where the system has such; removed at the end.
class WorkFolder {
 public:
  WorkFolder() {
    const char* const memory = "/dev/shm";
    std::string pattern =
        (std::filesystem::is_directory(memory) ? std::filesystem::path(memory)
                                               : std::filesystem::temp_directory_path()) /
        "kv-fuzz-XXXXXX";
    require(::mkdtemp(pattern.data()) != nullptr, "there is a folder to work in");
    path_ = pattern;
  }
  ~WorkFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  WorkFolder(const WorkFolder&) = delete;
  WorkFolder& operator=(const WorkFolder&) = delete;

  const std::filesystem::path& path() const { return path_; }

  std::filesystem::path write(const std::string& name, std::string_view content) const {
    std::ofstream(path_ / name, std::ios::binary) << content;
    return path_ / name;
  }

 private:
  std::filesystem::path path_;
};

inline std::string_view text_of(std::span<const std::uint8_t> bytes) {
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

}  // namespace kv::fuzzing
