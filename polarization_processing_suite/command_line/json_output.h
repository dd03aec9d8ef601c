// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <filesystem>
#include <nlohmann/json.hpp>
#include <string>

#include "command_line/json_type.h"

namespace kv::polarization {

/// Null for an empty path.
Json json_of(const std::filesystem::path& path);

/// In one line, without its end.
std::string line_of(const Json& json);

/// For a file or a stream. Bytes of file names that are no UTF-8 become replacement characters.
std::string text_of(const Json& json);

}  // namespace kv::polarization
