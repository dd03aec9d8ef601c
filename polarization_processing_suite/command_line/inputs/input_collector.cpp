// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "command_line/inputs/input_collector.h"

#include <algorithm>

#include "command_line/path_text.h"

namespace kv::polarization {
namespace {

/// As patterns are held against it: / between names, and no ./ before them.
std::string plain_text(const std::filesystem::path& path) {
  return text_of(std::filesystem::path(path.lexically_normal().generic_u8string()));
}

}  // namespace

InputCollector::InputCollector(const InputRequest& request) : request_(request) {
  for (const std::string& pattern : request.skip) skip_.emplace_back(plain_text(path_of(pattern)));
}

void InputCollector::add_named(const std::filesystem::path& path) {
  if (is_skipped(path)) {
    ++list_.skipped;
  } else {
    add(path, {});
  }
}

void InputCollector::add_found(const std::filesystem::path& path,
                               const std::filesystem::path& folder) {
  if (is_skipped(path)) {
    ++list_.skipped;
  } else if (request_.is_own_result && request_.is_own_result(path)) {
    ++list_.own_results;
  } else {
    add(path, folder);
  }
}

void InputCollector::add(const std::filesystem::path& path, const std::filesystem::path& folder) {
  if (seen_.insert(identity_.file_of(path)).second) list_.inputs.push_back({path, folder});
}

bool InputCollector::is_skipped(const std::filesystem::path& path) const {
  if (skip_.empty()) return false;
  const std::string name = text_of(path.filename());
  const std::string whole = plain_text(path);
  return std::ranges::any_of(skip_, [&](const PathPattern& pattern) {
    return pattern.matches(name) || pattern.matches(whole);
  });
}

}  // namespace kv::polarization
