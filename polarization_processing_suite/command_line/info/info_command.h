// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <filesystem>
#include <vector>

#include "command_line/info/file_report.h"

namespace kv::polarization {

struct InfoOptions {
  std::vector<std::filesystem::path> files;  ///< none to look at the machine
  FileQuestion question;
  bool json = false;
};

/// Prints what files, or the tool and the machine, are. Returns an exit status.
int run_info(const InfoOptions& options);

}  // namespace kv::polarization
