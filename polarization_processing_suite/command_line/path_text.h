// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace kv::polarization {

/// Paths as texts of the command line and of messages, which are UTF-8 where the system's paths are
/// no bytes.
std::filesystem::path path_of(const std::string& text);
std::string text_of(const std::filesystem::path& path);

/// The names in a path that has / between them; they may be empty.
std::vector<std::string_view> names_of(std::string_view path);

}  // namespace kv::polarization
