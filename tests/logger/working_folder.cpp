#include "working_folder.h"

#include <fstream>
#include <random>

namespace kv::test {

namespace fs = std::filesystem;

WorkingFolder::WorkingFolder(const std::string& config) : before_(fs::current_path()) {
  path_ = fs::temp_directory_path() / ("logger_test_" + std::to_string(std::random_device{}()));
  fs::create_directory(path_);
  fs::current_path(path_);
  if (!config.empty()) write_file("kevrinth_qrm_logger.cfg", config);
}

WorkingFolder::~WorkingFolder() {
  fs::current_path(before_);
  fs::remove_all(path_);
}

void write_file(const fs::path& path, const std::string& text) {
  std::ofstream(path, std::ios::binary) << text;
}

std::vector<std::string> lines_of(const fs::path& path) {
  std::ifstream file(path);
  std::vector<std::string> lines;
  for (std::string line; std::getline(file, line);) lines.push_back(line);
  return lines;
}

}  // namespace kv::test
