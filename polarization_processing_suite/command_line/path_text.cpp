// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "command_line/path_text.h"

#include <algorithm>

namespace kv::polarization {

std::filesystem::path path_of(const std::string& text) {
  return std::u8string(text.begin(), text.end());
}

std::string text_of(const std::filesystem::path& path) {
  const std::u8string text = path.u8string();
  return {text.begin(), text.end()};
}

std::vector<std::string_view> names_of(std::string_view path) {
  std::vector<std::string_view> names;
  while (true) {
    const std::size_t end = std::min(path.find('/'), path.size());
    names.push_back(path.substr(0, end));
    if (end == path.size()) return names;
    path.remove_prefix(end + 1);
  }
}

}  // namespace kv::polarization
