// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "command_line/inputs/file_identity.h"

#include <system_error>

#include "command_line/path_text.h"
#include "platform/file_names.h"

namespace kv::polarization {
namespace fs = std::filesystem;
namespace {

std::string folded(std::string text) {
  if (!platform::kNamesIgnoreCase) return text;
  for (char& letter : text) {
    if (letter >= 'A' && letter <= 'Z') letter = static_cast<char>(letter - 'A' + 'a');
  }
  return text;
}

fs::path true_path(const fs::path& path) {
  std::error_code failure;
  // Without a folder before it, a name that does not exist stays relative.
  fs::path found = fs::weakly_canonical(fs::absolute(path, failure), failure);
  if (failure) found = path.lexically_normal();
  // A path whose end became nothing keeps a / there.
  return found.has_filename() ? found : found.parent_path();
}

}  // namespace

std::string FileIdentity::place_of(const fs::path& path) {
  const std::string name = text_of(path.filename());
  if (name.empty() || name == "." || name == "..") return folded(text_of(true_path(path)));
  const fs::path folder = path.parent_path();
  const auto [place, is_new] = folders_.try_emplace(text_of(folder));
  if (is_new) place->second = text_of(true_path(folder.empty() ? "." : folder));
  return folded(place->second + "/" + name);
}

std::string FileIdentity::file_of(const fs::path& path) {
  std::error_code ignored;
  if (!fs::is_symlink(path, ignored)) return place_of(path);
  return place_of(true_path(path));
}

}  // namespace kv::polarization
