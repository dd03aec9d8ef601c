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

/// As one argument of the tool. To a Windows program a backslash before a quote makes the quote a
/// part of the argument, and two of them are one backslash.
std::string argument(const std::string& text) {
#if defined(_WIN32)
  if (text.ends_with('\\')) return quoted(text + "\\");
#endif
  return quoted(text);
}

/// What a stream of text holds, its lines ended as C++ ends them.
std::string text_of(const std::filesystem::path& path) {
  std::string text = content_of(path);
#if defined(_WIN32)
  for (std::size_t at = 0; (at = text.find("\r\n", at)) != std::string::npos;) text.erase(at, 1);
#endif
  return text;
}

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
  std::string command = shell_command + quoted(program_);
  for (const std::string& text : arguments) command += " " + argument(text);
  command += " >" + quoted(out.string()) + " 2>" + quoted(error.string());
  const int result = std::system(for_shell(command).c_str());
  return {exit_status_of(result), text_of(out), text_of(error)};
}
