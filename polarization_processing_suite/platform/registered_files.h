// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <filesystem>

namespace kv::platform {

/// Notes a file to be removed when a signal ends the process; its number for unregister_file. Below
/// 0 when all places are taken or the path is too long for one; then the file just stays.
///
/// Any thread may call these three at any time, and a signal handler the last one.
int register_file(const std::filesystem::path& path) noexcept;
void unregister_file(int number) noexcept;
void remove_registered_files() noexcept;

}  // namespace kv::platform
