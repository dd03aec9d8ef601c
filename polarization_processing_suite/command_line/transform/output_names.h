#pragma once

#include <cstddef>
#include <filesystem>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace kv::polarization {

/// Names the results so that none replaces another result of this run, or an input.
class OutputNames {
 public:
  OutputNames(std::filesystem::path folder, const std::vector<std::filesystem::path>& inputs);

  /// How the names of a frame's results begin: with the file's stem and, if it has several pages,
  /// the page from 1 up, with as many digits as the last one. Throws Fault when an earlier frame's
  /// names begin like that.
  std::string stem_for(const std::filesystem::path& input, std::size_t page, std::size_t pages);

  /// The path of a result. Throws Fault when it is one of the inputs.
  std::filesystem::path path_for(const std::string& file_name) const;

 private:
  std::filesystem::path folder_;
  std::set<std::filesystem::path> inputs_;
  std::map<std::string, std::filesystem::path> taken_;
};

}  // namespace kv::polarization
