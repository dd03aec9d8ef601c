// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <filesystem>

namespace kv::polarization {

/// Whether a file tells of itself that this program made it. Tens of microseconds.
bool is_own_result(const std::filesystem::path& file);

/// The same of the file beside a result, which tells of that.
bool is_own_sidecar(const std::filesystem::path& file);

}  // namespace kv::polarization
