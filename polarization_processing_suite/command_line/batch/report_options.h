// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <filesystem>
#include <optional>

namespace kv::polarization {

/// How a run tells what it does.
struct ReportOptions {
  bool quiet = false;
  bool verbose = false;
  bool json = false;
  std::optional<int> events;  ///< descriptor of a file
  std::optional<std::filesystem::path> list_failed;
};

}  // namespace kv::polarization
