// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>

#include "command_line/compare/compare_command.h"
#include "command_line/compare/folder_comparison.h"
#include "command_line/json_output.h"

namespace kv::polarization {

/// Tells what differs, as it is found or as one JSON object at the end, and counts.
class CompareReport {
 public:
  explicit CompareReport(const CompareOptions& options) : options_(options) {}

  void add(const std::filesystem::path& name, const FileComparison& comparison);
  void add_lone(const FilePair& pair);

  /// Writes the summary, or the object. Returns the exit status.
  int finish(bool interrupted) const;

 private:
  void tell(const std::filesystem::path& name, const std::string& line) const;
  std::string summary() const;

  const CompareOptions& options_;
  std::size_t equal_ = 0;
  std::size_t different_ = 0;
  std::size_t failed_ = 0;
  std::size_t only_left_ = 0;
  std::size_t only_right_ = 0;
  Json files_ = Json::array();
};

}  // namespace kv::polarization
