#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace kv::test {

/// A working folder of the test's own, with a configuration in it if one is given.
class WorkingFolder {
 public:
  explicit WorkingFolder(const std::string& config = {});
  ~WorkingFolder();
  WorkingFolder(const WorkingFolder&) = delete;
  WorkingFolder& operator=(const WorkingFolder&) = delete;

  const std::filesystem::path& path() const { return path_; }

 private:
  std::filesystem::path before_;
  std::filesystem::path path_;
};

void write_file(const std::filesystem::path& path, const std::string& text);

std::vector<std::string> lines_of(const std::filesystem::path& path);

}  // namespace kv::test
