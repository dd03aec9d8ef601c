#include "tool.h"

#include <algorithm>
#include <cstdlib>

#if !defined(_WIN32)
#include <sys/wait.h>
#endif

namespace {

std::string in_quotes(const std::filesystem::path& path) { return "\"" + path.string() + "\""; }

/// What a stream of text holds, its lines ended as C++ ends them.
std::string text_of(const std::filesystem::path& path) {
  std::string text = content_of(path);
  std::erase(text, '\r');
  return text;
}

/// Exit status of a command that the system's shell runs in that folder.
int run_in_shell(const std::filesystem::path& folder, const std::string& command) {
#if defined(_WIN32)
  // cmd.exe takes the outermost quotes of a command away.
  return std::system(("\"cd /d " + in_quotes(folder) + " && " + command + "\"").c_str());
#else
  const int result = std::system(("cd " + in_quotes(folder) + "; " + command).c_str());
  return WIFEXITED(result) ? WEXITSTATUS(result) : -1;
#endif
}

}  // namespace

std::size_t ToolResult::complaints() const {
  return static_cast<std::size_t>(std::count(error.begin(), error.end(), '\n'));
}

ToolResult Tool::run(const std::string& arguments, const std::string& before,
                     const std::string& behind) const {
  const auto out = streams_ / "out";
  const auto error = streams_ / "error";
  const std::string streams = " >" + in_quotes(out) + " 2>" + in_quotes(error);
  const int status =
      run_in_shell(path(""), before + in_quotes(program_) + " " + arguments + streams + behind);
  return {status, text_of(out), text_of(error)};
}
