// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

#include "kv/image_files/pending_file.h"

/// An empty folder of its own, so that tests may run at the same time; removed with all it holds.
class TemporaryFolder {
 public:
  TemporaryFolder()
      : path_(std::filesystem::temp_directory_path() /
              ("kv-test-" + std::to_string(std::random_device{}()))) {
    std::filesystem::create_directory(path_);
  }
  ~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

  std::filesystem::path operator/(const std::string& name) const { return path_ / name; }

 private:
  std::filesystem::path path_;
};

inline std::vector<std::string> names_in(const std::filesystem::path& folder) {
  std::vector<std::string> names;
  if (!std::filesystem::exists(folder)) return names;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    names.push_back(entry.path().filename().string());
  }
  std::sort(names.begin(), names.end());
  return names;
}

inline std::string content_of(const std::filesystem::path& path) {
  std::ifstream stream(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

inline void write_content(const std::filesystem::path& path, const std::string& content) {
  std::ofstream(path, std::ios::binary) << content;
}

/// What a function that takes a PendingFile has written.
template <class Write>
std::string written(const std::filesystem::path& path, Write write) {
  kv::polarization::PendingFile file(path);
  write(file);
  file.close();
  file.publish();
  return content_of(path);
}
