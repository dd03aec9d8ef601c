// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <filesystem>
#include <vector>

#include "command_line/batch/journal.h"
#include "platform/file_lock.h"

namespace kv::polarization {

/// The folder of results while a run writes to it. Several runs may share one; what has to be alone
/// with it, tidying up, is left to the one that is.
class ResultsFolder {
 public:
  /// Makes the folders, finds out whether they can be written to, and removes what a killed run
  /// has left of its files. Throws Fault.
  ResultsFolder(const std::filesystem::path& folder,
                const std::vector<std::filesystem::path>& folders, Journal& journal);

  /// At the end of the run: puts the journal in order.
  void tidy();

 private:
  bool lock(platform::FileLock::Mode mode);

  std::filesystem::path folder_;
  Journal& journal_;
  std::optional<platform::FileLock> lock_;
};

}  // namespace kv::polarization
