// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <filesystem>
#include <optional>

namespace kv::polarization {

struct AgainOptions {
  std::filesystem::path result;
  std::optional<std::filesystem::path> from;  ///< folder that recorded names are relative to
};

/// Makes a result once more from what it records, and compares. Returns an exit status: success for
/// equal bytes. Throws Fault when it cannot be made.
int run_again(const AgainOptions& options);

}  // namespace kv::polarization
