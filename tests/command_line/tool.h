// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "toolkit/error_of.h"
#include "toolkit/temporary_folder.h"

#if !defined(_WIN32)
#include <sys/wait.h>
#endif

using Names = std::vector<std::string>;

struct ToolResult {
  int status;
  std::string out;
  std::string error;

  /// Lines on the error stream.
  auto complaints() const { return std::count(error.begin(), error.end(), '\n'); }
};

/// The built tool and a folder that it works in.
class Tool {
 public:
  explicit Tool(std::filesystem::path program = KV_TOOL_PATH) : program_(std::move(program)) {}

  /// Runs kv-polarize with these arguments of a command line; a POSIX shell can run commands before
  /// and behind it.
  ToolResult run(const std::string& arguments, const std::string& before = "",
                 const std::string& behind = "") const {
    const auto quoted = [](const std::filesystem::path& path) {
      return "\"" + path.string() + "\"";
    };
    const auto text_of = [](const std::filesystem::path& path) {
      std::string text = content_of(path);
      std::erase(text, '\r');
      return text;
    };
    const auto out = streams_ / "out";
    const auto error = streams_ / "error";
    const std::string place = quoted(path(""));
    const std::string command = before + quoted(program_) + " " + arguments + " >" + quoted(out) +
                                " 2>" + quoted(error) + behind;
#if defined(_WIN32)
    // cmd.exe takes the outermost quotes of a command away.
    const int status = std::system(("\"cd /d " + place + " && " + command + "\"").c_str());
#else
    const int result = std::system(("cd " + place + "; " + command).c_str());
    const int status = WIFEXITED(result) ? WEXITSTATUS(result) : -1;
#endif
    return {status, text_of(out), text_of(error)};
  }

  std::filesystem::path path(const std::string& name) const { return folder_ / name; }
  void write(const std::string& name, const std::string& content) const {
    write_content(path(name), content);
  }
  std::string content(const std::string& name) const { return content_of(path(name)); }

  /// Names of the files in that folder, sorted; none if there is no such folder.
  Names files_in(const std::string& name) const { return names_in(path(name)); }

  /// The same without the journal.
  Names results_in(const std::string& name) const {
    Names names = files_in(name);
    std::erase(names, "kv-polarize.journal");
    return names;
  }

 private:
  std::filesystem::path program_;
  TemporaryFolder folder_;
  TemporaryFolder streams_;
};
