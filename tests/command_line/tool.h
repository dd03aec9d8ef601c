#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "toolkit/error_of.h"
#include "toolkit/temporary_folder.h"

using Names = std::vector<std::string>;

struct ToolResult {
  int status;
  std::string out;
  std::string error;

  /// Lines on the error stream.
  std::size_t complaints() const;
};

/// The built tool and a folder that it works in.
class Tool {
 public:
  explicit Tool(std::string program = KV_TOOL_PATH) : program_(std::move(program)) {}

  /// Runs kv-polarize with these arguments of a command line; a POSIX shell can run commands before
  /// and behind it.
  ToolResult run(const std::string& arguments, const std::string& before = "",
                 const std::string& behind = "") const;

  std::filesystem::path path(const std::string& name) const { return folder_ / name; }
  void write(const std::string& name, const std::string& content) const {
    write_content(path(name), content);
  }
  std::string content(const std::string& name) const { return content_of(path(name)); }

  /// Names of the files in that folder, sorted; none if there is no such folder.
  Names files_in(const std::string& name) const { return names_in(path(name)); }

 private:
  std::string program_;
  TemporaryFolder folder_;
  TemporaryFolder streams_;
};
