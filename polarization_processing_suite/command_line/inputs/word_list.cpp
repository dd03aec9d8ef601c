// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "command_line/inputs/word_list.h"

#include <cerrno>
#include <fstream>
#include <iostream>
#include <system_error>

#include "command_line/path_text.h"
#include "kv/polarization/fault.h"

namespace kv::polarization {
namespace {

constexpr const char* kByteOrderMark = "\xEF\xBB\xBF";

std::vector<std::string> words_of(std::istream& stream, const std::string& name) {
  std::vector<std::string> words;
  std::string line;
  for (bool is_first = true; std::getline(stream, line); is_first = false) {
    if (is_first && line.starts_with(kByteOrderMark)) line.erase(0, 3);
    if (line.ends_with('\r')) line.pop_back();
    if (line.find('\0') != std::string::npos) {
      throw Fault(FaultKind::file, "the list " + name + " is no plain text; save it as UTF-8");
    }
    const std::size_t start = line.find_first_not_of(" \t");
    if (start != std::string::npos && line[start] != '#') words.push_back(line);
  }
  if (stream.bad()) throw Fault(FaultKind::file, "cannot read the list " + name + " to its end");
  return words;
}

}  // namespace

std::vector<std::string> read_word_list(const std::string& name) {
  if (name == "-") return words_of(std::cin, "on standard input");
  errno = 0;
  std::ifstream stream(path_of(name), std::ios::binary);
  if (!stream || std::filesystem::is_directory(path_of(name))) {
    const std::string why = errno != 0 ? std::generic_category().message(errno) : "it is no file";
    throw Fault(FaultKind::file, "cannot read the list " + name + ": " + why +
                                     "; behind @ stands a file of paths, a line each");
  }
  return words_of(stream, name);
}

}  // namespace kv::polarization
