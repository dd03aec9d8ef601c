// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>
#include <unordered_set>
#include <utility>
#include <vector>

#include "command_line/inputs/file_identity.h"
#include "command_line/inputs/input_list.h"
#include "command_line/inputs/name_pattern.h"

namespace kv::polarization {

/// Makes the list of inputs of the files that are found, one after the other: each once, and none
/// that is to be left out.
class InputCollector {
 public:
  /// The request must outlive it.
  explicit InputCollector(const InputRequest& request);

  /// A file that a word names.
  void add_named(const std::filesystem::path& path);

  /// A file that a folder or a pattern brought up.
  void add_found(const std::filesystem::path& path, const std::filesystem::path& folder);

  void add_standard_input() { list_.inputs.push_back({"-", {}}); }

  const InputList& list() const { return list_; }
  InputList take_list() { return std::move(list_); }

 private:
  bool is_skipped(const std::filesystem::path& path) const;
  void add(const std::filesystem::path& path, const std::filesystem::path& folder);

  const InputRequest& request_;
  std::vector<PathPattern> skip_;
  FileIdentity identity_;
  std::unordered_set<std::string> seen_;
  InputList list_;
};

}  // namespace kv::polarization
