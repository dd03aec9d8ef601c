#include "tool.h"

#include <algorithm>
#include <cstdlib>

#if !defined(_WIN32)
#include <sys/wait.h>
#endif

namespace {

int exit_status_of(int result) {
#if defined(_WIN32)
  return result;
#else
  return WIFEXITED(result) ? WEXITSTATUS(result) : -1;
#endif
}

std::string quoted(const std::string& text) { return "\"" + text + "\""; }

/// cmd.exe takes the outermost quotes of a command away.
std::string for_shell(const std::string& command) {
#if defined(_WIN32)
  return quoted(command);
#else
  return command;
#endif
}

}  // namespace

std::size_t ToolResult::complaints() const {
  return static_cast<std::size_t>(std::count(error.begin(), error.end(), '\n'));
}

ToolResult Tool::run(const std::vector<std::string>& arguments) const {
  return run_after("", arguments);
}

ToolResult Tool::run_after(const std::string& shell_command,
                           const std::vector<std::string>& arguments) const {
  const auto out = streams_ / "out";
  const auto error = streams_ / "error";
  std::string command = shell_command + quoted(KV_TOOL_PATH);
  for (const std::string& argument : arguments) command += " " + quoted(argument);
  command += " >" + quoted(out.string()) + " 2>" + quoted(error.string());
  const int result = std::system(for_shell(command).c_str());
  return {exit_status_of(result), content_of(out), content_of(error)};
}
