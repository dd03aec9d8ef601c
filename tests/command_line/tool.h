#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "toolkit/temporary_folder.h"

struct ToolResult {
  int status;
  std::string out;
  std::string error;

  /// Lines on the error stream.
  std::size_t complaints() const;
};

/// A folder to work in and the built tool.
class Tool {
 public:
  explicit Tool(std::string program = KV_TOOL_PATH) : program_(std::move(program)) {}

  /// Runs kv-polarize with these arguments.
  ToolResult run(const std::vector<std::string>& arguments) const;

  /// The same after another command of the POSIX shell, in one shell.
  ToolResult run_after(const std::string& shell_command,
                       const std::vector<std::string>& arguments) const;

  std::string path(const std::string& name) const { return (folder_ / name).string(); }

  /// Names of the files in that folder, sorted; none if there is no such folder.
  std::vector<std::string> files_in(const std::string& name) const { return names_in(path(name)); }

 private:
  std::string program_;
  TemporaryFolder folder_;
  TemporaryFolder streams_;
};
