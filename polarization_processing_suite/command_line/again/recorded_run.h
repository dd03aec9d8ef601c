// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "command_line/json_output.h"

namespace kv::polarization {

/// What a result tells of how it was made.
class RecordedRun {
 public:
  /// Throws Fault when the file tells nothing of it.
  explicit RecordedRun(const std::filesystem::path& result);

  /// Words of a command line, from the command on.
  const std::vector<std::string>& command() const { return command_; }

  /// Throws Fault when the frames, or the calibration, are not those that were recorded.
  void check_input() const;

  /// Sentences on what is other here than where the result was made, and may change its bytes.
  std::vector<std::string> differences_from_here() const;

 private:
  void check_file(const char* key, const char* what) const;

  Json record_;
  std::vector<std::string> command_;
};

}  // namespace kv::polarization
