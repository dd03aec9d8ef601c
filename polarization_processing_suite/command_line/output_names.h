#pragma once

#include <cstddef>
#include <filesystem>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace kv {

/// Makes sure that no result takes the place of another one of this run, or of an input.
class OutputNames {
 public:
  OutputNames(std::filesystem::path folder, const std::vector<std::filesystem::path>& inputs);

  /// How the names of a frame's results begin: the file's stem and, if it has several pages, the
  /// page from 1 up with as many digits as the last one. Throws Error when an earlier frame has
  /// these names.
  std::string stem_for(const std::filesystem::path& input, std::size_t page, std::size_t pages);

  /// Throws Error when that file is one of the inputs.
  std::filesystem::path path_for(const std::string& file_name) const;

 private:
  std::filesystem::path folder_;
  std::set<std::filesystem::path> inputs_;
  std::map<std::string, std::filesystem::path> taken_;
};

}  // namespace kv
